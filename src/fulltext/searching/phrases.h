#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_terms.h"

namespace quorvex::textsearch {

struct SoughtPhrase {
  const std::vector<QueryWord>* words;
  bool isExcluded;
};

/// Of the allowed documents, keeps those that have all phrases but no excluded one. A document has
/// a phrase when its words stand side by side in the text or the title, without inflections. Each
/// text is read once, however many phrases there are. `allowed`: of each document, not 0.
void restrictToPhrases(const IndexReader& index, const TitleIndex& titles,
                       const std::vector<SoughtPhrase>& sought, std::vector<std::uint8_t>& allowed);

/// Returns the documents with a phrase of at least two words whose last word may be any of several,
/// ascending; without it for one that no document has.
std::vector<std::uint32_t> documentsWithPhraseBeginning(const IndexReader& index,
                                                        const TitleIndex& titles,
                                                        std::vector<QueryWord> words,
                                                        const WordTerms& last);

}  // namespace quorvex::textsearch
