#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

/// The term of the index that a word which it lacks was probably meant to be: the nearest by edits
/// (a letter put in, left out, replaced, or two neighbours swapped), of equally near ones one with
/// the same first letter, then the one in the most documents. At most one edit is allowed for words
/// of up to four letters, two for longer ones. Walks all terms once.
std::optional<std::string> nearestTerm(const IndexReader& index, const TitleIndex& titles,
                                       std::string_view word);

}  // namespace quorvex::textsearch
