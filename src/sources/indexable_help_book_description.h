#pragma once

#include <memory>

#include "sources/indexable.h"

namespace quorvex {

/// Reads pages from a description, whose key "PageData" maps subpaths to data.
class QXIndexableHelpBookDescription : public QXIndexable {
 public:
  explicit QXIndexableHelpBookDescription(std::shared_ptr<const Dictionary> description)
      : _descriptionDictionary(std::move(description)) {}

  const std::shared_ptr<const Dictionary>& descriptionDictionary() const {
    return _descriptionDictionary;
  }

  /// All keys of "PageData"; null when there is no such dictionary.
  std::optional<std::vector<std::string>> subpaths() override;
  /// Returns the page's data, shared with the description, or the bytes of a string. Any other kind
  /// counts as missing.
  std::optional<Data> contentsOfSubpath(const std::string& subpath) override;
  /// Accepts every listed page.
  std::optional<Predicate> defaultIncludePredicate() const override;
  /// Null: a description has no root folder.
  std::optional<URL> baseURL() const override { return std::nullopt; }

 private:
  const Dictionary* pageData() const;

  std::shared_ptr<const Dictionary> _descriptionDictionary;
};

}  // namespace quorvex
