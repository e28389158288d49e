#include "fulltext/searching/stem_table.h"

#include <functional>

namespace quorvex::textsearch {

StemTable::StemTable(const IndexReader& index, const TitleIndex& titles, Stemmer& stemmer) {
  for (TermDictionary::Cursor cursor(index.terms(), 0); cursor.next();)
    _inTexts.push_back({hashOf(stemmer.stem(cursor.term())), cursor.id()});
  for (std::uint32_t term = 0; term < titles.terms().size(); ++term)
    _inTitles.push_back({hashOf(stemmer.stem(titles.terms()[term])), term});
  std::ranges::stable_sort(_inTexts, {}, &Entry::hash);
  std::ranges::stable_sort(_inTitles, {}, &Entry::hash);
}

std::uint32_t StemTable::hashOf(std::string_view stem) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(stem));
}

}  // namespace quorvex::textsearch
