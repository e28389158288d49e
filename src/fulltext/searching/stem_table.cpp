#include "fulltext/searching/stem_table.h"

#include <functional>

namespace quorvex::textsearch {

StemTable::StemTable(const IndexReader& index, const TitleIndex& titles, Stemmer& stemmer) {
  for (TermDictionary::Cursor cursor(index.terms(), 0); cursor.next();)
    _inTexts.push_back({hashOf(stemmer.stem(cursor.term())), cursor.id()});
  for (std::uint32_t term = 0; term < titles.terms().size(); ++term)
    _inTitles.push_back({hashOf(stemmer.stem(titles.terms()[term])), term});
  std::ranges::sort(_inTexts);
  std::ranges::sort(_inTitles);
}

std::uint32_t StemTable::hashOf(std::string_view stem) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(stem));
}

const StemTable& StemTables::of(std::string_view language, const IndexReader& index,
                                const TitleIndex& titles, Stemmer& stemmer) const {
  const std::lock_guard lock(_mutex);
  auto found = _tables.find(language);
  if (found == _tables.end()) {
    auto table = std::make_unique<const StemTable>(index, titles, stemmer);
    found = _tables.emplace(language, std::move(table)).first;
  }
  return *found->second;
}

}  // namespace quorvex::textsearch
