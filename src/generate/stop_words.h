#pragma once

#include <optional>
#include <set>
#include <string>

namespace quorvex {

/// The installed lists: a keyed document that maps two-letter language codes to arrays of words.
inline constexpr const char* builtInStopWordsPath = "/usr/share/quorvex/Stopwords.kvdoc";

/// Returns the stop words that -s selects: a two-character argument is a key of the installed
/// lists, a longer one the path of a keyed document with an array of words. Returns the empty set
/// for a missing or empty argument, and on failure after a message that always names the installed
/// lists. They are read from `builtInPath`.
std::set<std::string> stopWords(const std::optional<std::string>& argument,
                                const std::string& builtInPath = builtInStopWordsPath);

}  // namespace quorvex
