#include "fulltext/searching/stem_table.h"

#include <functional>

namespace quorvex::textsearch {

StemTable::StemTable(const IndexReader& index, const TitleIndex& titles, Stemmer& stemmer) {
  for (TermDictionary::Cursor cursor(index.terms(), 0); cursor.next();)
    _inTexts.push_back({hashOf(stemmer.stem(cursor.term())), cursor.id()});
  for (TermDictionary::Cursor cursor(titles.terms(), 0); cursor.next();)
    _inTitles.push_back({hashOf(stemmer.stem(cursor.term())), cursor.id()});
  std::ranges::stable_sort(_inTexts, {}, &Entry::hash);
  std::ranges::stable_sort(_inTitles, {}, &Entry::hash);
}

std::uint32_t StemTable::hashOf(std::string_view stem) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(stem));
}

}  // namespace quorvex::textsearch
