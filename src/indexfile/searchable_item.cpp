#include "platform/searchable_item.h"

#include <algorithm>

namespace quorvex {

namespace {

constexpr std::string_view contentTypeField = "contentType";
constexpr std::string_view displayNameField = "displayName";
constexpr std::string_view keywordsField = "keywords";
constexpr std::string_view textContentField = "textContent";
constexpr std::string_view contentDescriptionField = "contentDescription";
constexpr std::string_view attributesField = "customAttributes";
constexpr std::string_view uniqueIdentifierField = "uniqueIdentifier";
constexpr std::string_view domainIdentifierField = "domainIdentifier";
constexpr std::string_view attributeSetField = "attributeSet";

void put(Dictionary& fields, std::string_view name, const std::optional<std::string>& text) {
  if (text) fields.emplace(name, *text);
}

/// Takes fields out of a dictionary one by one and remembers the first error.
class FieldReader {
 public:
  FieldReader(std::string_view className, Dictionary& fields)
      : _className(className), _fields(fields) {}

  /// `content` returns a pointer to the wanted content of a value, or null.
  template <typename Content>
  std::optional<Content> take(std::string_view name, Content* (*content)(Value&)) {
    std::optional<Content> taken;
    const auto entry = _fields.find(name);
    if (entry == _fields.end()) return taken;
    if (Content* found = content(entry->second)) {
      taken = std::move(*found);
    } else {
      refuse(name, kindName(entry->second));
    }
    _fields.erase(entry);
    return taken;
  }

  std::optional<std::string> takeText(std::string_view name) {
    return take<std::string>(name, [](Value& value) { return value.string(); });
  }

  std::optional<std::vector<std::string>> takeTexts(std::string_view name) {
    std::optional<Array> elements = take<Array>(name, [](Value& value) { return value.array(); });
    if (!elements) return std::nullopt;
    std::vector<std::string> texts;
    texts.reserve(elements->size());
    for (Value& element : *elements) {
      std::string* text = element.string();
      if (text == nullptr) {
        refuse(name, kindName(element));
        return std::nullopt;
      }
      texts.push_back(std::move(*text));
    }
    return texts;
  }

  void refuse(std::string_view name, std::string_view found) {
    if (!_status) return;
    std::string reason(_className);
    reason.append(": unexpected ").append(found).append(" in field ").append(name);
    _status = Error{std::move(reason)};
  }

  /// Returns the first error; a field that was not taken is one too.
  Status finish() {
    if (!_fields.empty()) refuse(_fields.begin()->first, kindName(_fields.begin()->second));
    return _status;
  }

 private:
  std::string_view _className;
  Dictionary& _fields;
  Status _status = okStatus();
};

/// May recurse, as readers limit the nesting of untrusted input.
bool holdsObject(const Dictionary& dictionary);

bool isOrHoldsObject(const Value& value) {
  if (value.object() != nullptr) return true;
  if (const Array* array = value.array()) return std::ranges::any_of(*array, isOrHoldsObject);
  return value.dictionary() != nullptr && holdsObject(*value.dictionary());
}

bool holdsObject(const Dictionary& dictionary) {
  return std::ranges::any_of(dictionary,
                             [](const auto& entry) { return isOrHoldsObject(entry.second); });
}

}  // namespace

void BCSearchableItemAttributeSet::setAttribute(std::optional<Value> value,
                                                std::string_view forKey) {
  if (value) {
    _attributes.insert_or_assign(std::string(forKey), *std::move(value));
  } else if (const auto entry = _attributes.find(forKey); entry != _attributes.end()) {
    _attributes.erase(entry);
  }
}

Dictionary BCSearchableItemAttributeSet::archivedFields() const {
  Dictionary fields;
  fields.emplace(contentTypeField, _contentType);
  put(fields, displayNameField, _displayName);
  if (_keywords) fields.emplace(keywordsField, Array(_keywords->begin(), _keywords->end()));
  put(fields, textContentField, _textContent);
  put(fields, contentDescriptionField, _contentDescription);
  if (!_attributes.empty()) fields.emplace(attributesField, _attributes);
  return fields;
}

Result<Value::Object> BCSearchableItemAttributeSet::fromArchivedFields(Dictionary fields) {
  FieldReader reader(archivedClassName, fields);
  std::optional<std::string> contentType = reader.takeText(contentTypeField);
  if (!contentType) reader.refuse(contentTypeField, "absence");
  auto set = std::make_shared<BCSearchableItemAttributeSet>(contentType.value_or(std::string()));
  set->_displayName = reader.takeText(displayNameField);
  set->_keywords = reader.takeTexts(keywordsField);
  set->_textContent = reader.takeText(textContentField);
  set->_contentDescription = reader.takeText(contentDescriptionField);
  if (std::optional<Dictionary> attributes = reader.take<Dictionary>(
          attributesField, [](Value& value) { return value.dictionary(); })) {
    if (holdsObject(*attributes)) reader.refuse(attributesField, "object");
    set->_attributes = std::move(*attributes);
  }
  if (const Status finished = reader.finish(); !finished) return finished.error();
  return Value::Object(std::move(set));
}

BCSearchableItem::BCSearchableItem(std::optional<std::string> uniqueIdentifier,
                                   std::optional<std::string> domainIdentifier,
                                   std::shared_ptr<const BCSearchableItemAttributeSet> attributeSet)
    : _uniqueIdentifier(std::move(uniqueIdentifier)),
      _domainIdentifier(std::move(domainIdentifier)),
      _attributeSet(std::move(attributeSet)) {}

Dictionary BCSearchableItem::archivedFields() const {
  Dictionary fields;
  put(fields, uniqueIdentifierField, _uniqueIdentifier);
  put(fields, domainIdentifierField, _domainIdentifier);
  fields.emplace(attributeSetField, Value::Object(_attributeSet));
  return fields;
}

Result<Value::Object> BCSearchableItem::fromArchivedFields(Dictionary fields) {
  FieldReader reader(archivedClassName, fields);
  std::optional<std::string> uniqueIdentifier = reader.takeText(uniqueIdentifierField);
  std::optional<std::string> domainIdentifier = reader.takeText(domainIdentifierField);
  std::shared_ptr<const BCSearchableItemAttributeSet> set;
  if (const std::optional<Value> value =
          reader.take<Value>(attributeSetField, [](Value& found) { return &found; })) {
    if (const Value::Object* object = value->object()) {
      set = std::dynamic_pointer_cast<const BCSearchableItemAttributeSet>(*object);
    }
    if (set == nullptr) reader.refuse(attributeSetField, kindName(*value));
  } else {
    reader.refuse(attributeSetField, "absence");
  }
  if (const Status finished = reader.finish(); !finished) return finished.error();
  return Value::Object(std::make_shared<const BCSearchableItem>(
      std::move(uniqueIdentifier), std::move(domainIdentifier), std::move(set)));
}

AllowedKinds valuesAndSearchableItems() {
  AllowedKinds kinds = AllowedKinds::values();
  kinds.allowClass(BCSearchableItemAttributeSet::archivedClassName,
                   BCSearchableItemAttributeSet::fromArchivedFields,
                   AllowedKinds::Place::inObjects);
  kinds.allowClass(BCSearchableItem::archivedClassName, BCSearchableItem::fromArchivedFields);
  return kinds;
}

}  // namespace quorvex
