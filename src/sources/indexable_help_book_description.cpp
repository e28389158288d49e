#include "sources/indexable_help_book_description.h"

#include <cerrno>

#include "common/files.h"
#include "common/log.h"
#include "common/system_error.h"
#include "extract/page_limits.h"

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
  std::optional<Data> page;
  if (const Data* data = contents->data()) page = *data;
  if (const std::string* text = contents->string()) page = Data(*text);
  // The same as for a file in a folder.
  if (page && page->size() > maximumPageSize) {
    QXLog(0, "Failed reading file <%@>: %@", subpath, systemError(EFBIG));
    return std::nullopt;
  }
  return page;
}

std::optional<Predicate> QXIndexableHelpBookDescription::defaultIncludePredicate() const {
  return *Predicate::matching(Predicate::anyText);
}

}  // namespace quorvex
