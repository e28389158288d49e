#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/allowed_kinds.h"
#include "common/result.h"
#include "common/value.h"

// Beacon, the on-device search framework: the items to search.

namespace quorvex {

/// Describes one searchable item: four optional standard fields, and custom attributes under keys
/// chosen by the caller.
class BCSearchableItemAttributeSet : public ArchivableObject {
 public:
  static constexpr std::string_view archivedClassName = "BCSearchableItemAttributeSet";

  explicit BCSearchableItemAttributeSet(std::string itemContentType)
      : _contentType(std::move(itemContentType)) {}

  const std::string& contentType() const { return _contentType; }
  const std::optional<std::string>& displayName() const { return _displayName; }
  const std::optional<std::vector<std::string>>& keywords() const { return _keywords; }
  const std::optional<std::string>& textContent() const { return _textContent; }
  const std::optional<std::string>& contentDescription() const { return _contentDescription; }

  // Setting an absent value clears the field.
  void setDisplayName(std::optional<std::string> name) { _displayName = std::move(name); }
  void setKeywords(std::optional<std::vector<std::string>> keywords) {
    _keywords = std::move(keywords);
  }
  void setTextContent(std::optional<std::string> text) { _textContent = std::move(text); }
  void setContentDescription(std::optional<std::string> text) {
    _contentDescription = std::move(text);
  }

  /// Null if the key has no attribute. The value is valid until the attribute is set again.
  const Value* attributeForKey(std::string_view key) const { return find(_attributes, key); }
  /// An absent value removes the key.
  void setAttribute(std::optional<Value> value, std::string_view forKey);

  std::string_view className() const override { return archivedClassName; }
  Dictionary archivedFields() const override;

  /// Rebuilds a set from its archived fields, taking over their texts. Fails on a missing content
  /// type, a field of another kind or name, or a custom attribute that contains an object.
  static Result<Value::Object> fromArchivedFields(Dictionary fields);

 private:
  std::string _contentType;
  std::optional<std::string> _displayName;
  std::optional<std::vector<std::string>> _keywords;
  std::optional<std::string> _textContent;
  std::optional<std::string> _contentDescription;
  Dictionary _attributes;
};

/// A searchable item. Immutable; shares its attribute set, which is archived as a separate object,
/// so archiving copies the texts of one item at a time.
class BCSearchableItem : public ArchivableObject {
 public:
  static constexpr std::string_view archivedClassName = "BCSearchableItem";

  /// `attributeSet` must not be null.
  BCSearchableItem(std::optional<std::string> uniqueIdentifier,
                   std::optional<std::string> domainIdentifier,
                   std::shared_ptr<const BCSearchableItemAttributeSet> attributeSet);

  const std::optional<std::string>& uniqueIdentifier() const { return _uniqueIdentifier; }
  const std::optional<std::string>& domainIdentifier() const { return _domainIdentifier; }
  const BCSearchableItemAttributeSet& attributeSet() const { return *_attributeSet; }

  std::string_view className() const override { return archivedClassName; }
  Dictionary archivedFields() const override;

  /// Rebuilds an item from its archived fields; fails on a missing attribute set or a field of
  /// another kind or name.
  static Result<Value::Object> fromArchivedFields(Dictionary fields);

 private:
  std::optional<std::string> _uniqueIdentifier;
  std::optional<std::string> _domainIdentifier;
  std::shared_ptr<const BCSearchableItemAttributeSet> _attributeSet;
};

/// Every kind of value, and searchable items with their attribute sets.
AllowedKinds valuesAndSearchableItems();

}  // namespace quorvex
