#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// Whether beginningsOfStem() may be used for an index: false for a language whose stems may start
/// differently from their words, and for a stemmer that is newer than its rules and breaks them on
/// a sample of the index's terms. `language`: that of the stemmer.
bool beginningsAreKnown(std::string_view language, const IndexReader& index, Stemmer& stemmer);

/// Returns prefixes: each term with this stem starts with exactly one of them. Empty for a language
/// without rules.
std::vector<std::string> beginningsOfStem(std::string_view language, std::string_view stem);

}  // namespace quorvex::textsearch
