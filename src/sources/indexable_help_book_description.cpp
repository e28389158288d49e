#include "sources/indexable_help_book_description.h"

namespace quorvex {

const Dictionary* QXIndexableHelpBookDescription::pageData() const {
  const Value* pages = find(*_descriptionDictionary, "PageData");
  return pages != nullptr ? pages->dictionary() : nullptr;
}

std::optional<std::vector<std::string>> QXIndexableHelpBookDescription::subpaths() {
  const Dictionary* pages = pageData();
  if (pages == nullptr) return std::nullopt;
  std::vector<std::string> subpaths;
  subpaths.reserve(pages->size());
  for (const auto& [subpath, contents] : *pages)
    subpaths.push_back(subpath);
  return subpaths;
}

std::optional<Data> QXIndexableHelpBookDescription::contentsOfSubpath(const std::string& subpath) {
  const Dictionary* pages = pageData();
  const Value* contents = pages != nullptr ? find(*pages, subpath) : nullptr;
  if (contents == nullptr) return std::nullopt;
  if (const Data* data = contents->data()) return *data;
  if (const std::string* text = contents->string()) return Data(*text);
  return std::nullopt;
}

std::optional<Predicate> QXIndexableHelpBookDescription::defaultIncludePredicate() const {
  return *Predicate::matching(".*");
}

}  // namespace quorvex
