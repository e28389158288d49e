#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

/// Returns the index term that an unknown word was probably meant to be: the nearest by edits (a
/// letter inserted, deleted or replaced, or two neighbours swapped); on a tie one with the same
/// first letter, then the one in the most documents. Allows one edit for words of up to four
/// letters, two for longer ones. Walks all terms once.
std::optional<std::string> nearestTerm(const IndexReader& index, const TitleIndex& titles,
                                       std::string_view word);

}  // namespace quorvex::textsearch
