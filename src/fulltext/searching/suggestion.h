#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

/// What a word may have been meant to be.
struct SpellingCandidate {
  /// A term; two terms with a blank between for words run together; for a joined name that the
  /// index lacks, the name with its unknown parts replaced.
  std::string term;
  float cost = 0;             ///< the less, the likelier; about 1 for each edit
  std::size_t documents = 0;  ///< 0 for a name put together from parts
  bool isProminent = false;   ///< stands in a title, or is the name of something
};

/// Returns the terms most like a word, other than the word itself, likeliest first: by edits (a
/// letter inserted, deleted or replaced, or two neighbours swapped), then by their first letters,
/// by whether they stand in titles or names, and by the documents that have them. Allows one edit
/// for words of up to four characters, two for longer ones, three from twelve on. Walks all terms
/// once, and once for each unknown part of a joined name without similar terms.
std::vector<SpellingCandidate> similarTerms(const IndexReader& index, const TitleIndex& titles,
                                            std::string_view word, std::size_t count);

}  // namespace quorvex::textsearch
