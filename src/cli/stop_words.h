#pragma once

#include <optional>
#include <set>
#include <string>

namespace quorvex {

/// The installed lists: a keyed document, a dictionary from two-letter language codes to arrays of
/// words.
inline constexpr const char* builtInStopWordsPath = "/usr/share/quorvex/Stopwords.kvdoc";

/// The stop words that the argument of -s names: a text of two characters is a key of the installed
/// lists, a longer one the path of a keyed document that is an array of words. Nothing, or an empty
/// text, gives the empty set. So does every failure, after its message, which names the path of the
/// installed lists whatever failed. `builtInPath` is read in their place.
std::set<std::string> stopWords(const std::optional<std::string>& argument,
                                const std::string& builtInPath = builtInStopWordsPath);

}  // namespace quorvex
