#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

std::optional<std::uint32_t> TitleIndex::find(std::string_view term) const {
  const std::optional<TermEntry> found = terms().find(term);
  return found ? std::optional(found->id) : std::nullopt;
}

std::optional<TermEntry> TitleIndex::entry(std::uint32_t term) const {
  for (TermDictionary::Cursor cursor(terms(), term); cursor.next();) {
    if (cursor.id() == term) return cursor.entry();
  }
  return std::nullopt;
}

std::size_t TitleIndex::titleCount(std::uint32_t term) const {
  const std::optional<TermEntry> found = entry(term);
  return found ? found->documentCount : 0;
}

std::vector<TitleIndex::Posting> TitleIndex::postings(std::uint32_t term) const {
  const std::optional<TermEntry> found = entry(term);
  return found ? _table.postings(*found) : std::vector<Posting>();
}

}  // namespace quorvex::textsearch
