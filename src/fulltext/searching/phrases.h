#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

/// Returns the documents with the words of a phrase side by side in the text or the title,
/// ascending. The words match exactly, without inflections.
std::vector<std::uint32_t> documentsWithPhrase(const IndexReader& index, const TitleIndex& titles,
                                               const std::vector<QueryWord>& words);

}  // namespace quorvex::textsearch
