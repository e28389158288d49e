#pragma once

#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/searched_words.h"
#include "fulltext/searching/title_index.h"
#include "platform/textsift.h"

namespace quorvex::textsearch {

/// As TSSearchExplainWords().
std::vector<TSExplainedWord> explainWords(const IndexReader& index, const TitleIndex& titles,
                                          const TSSearchedWords& searched);

}  // namespace quorvex::textsearch
