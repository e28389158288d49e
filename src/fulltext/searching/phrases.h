#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_terms.h"

namespace quorvex::textsearch {

/// Returns the documents with the words of a phrase side by side in the text or the title,
/// ascending. The words match exactly, without inflections.
std::vector<std::uint32_t> documentsWithPhrase(const IndexReader& index, const TitleIndex& titles,
                                               const std::vector<QueryWord>& words);

/// The same for a phrase whose last word may be any of several; without it for one that no document
/// has.
std::vector<std::uint32_t> documentsWithPhraseBeginning(const IndexReader& index,
                                                        const TitleIndex& titles,
                                                        std::vector<QueryWord> words,
                                                        const WordTerms& last);

}  // namespace quorvex::textsearch
