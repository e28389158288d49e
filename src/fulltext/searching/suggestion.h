#pragma once

#include <cstddef>
#include <optional>
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

/// Returns the prominent term that a word of the index is likely a misspelling of: the word is in
/// hardly any document, the term in many more. Null for any other word.
std::optional<SpellingCandidate> commonerTerm(const IndexReader& index, const TitleIndex& titles,
                                              std::string_view word);

/// Returns the term that two neighbouring words make without the blank between them.
std::optional<SpellingCandidate> joinedTerm(const IndexReader& index, const TitleIndex& titles,
                                            std::string_view first, std::string_view second);

/// Returns the likeliest of the similar terms.
std::optional<std::string> nearestTerm(const IndexReader& index, const TitleIndex& titles,
                                       std::string_view word);

}  // namespace quorvex::textsearch
