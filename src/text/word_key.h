#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/letter_folding.h"

namespace quorvex {

/// What all ways to write a word have in common: its parts as by appendFolded(), without what joins
/// them (`.` `_` `:` `'` `-` and whatever else is no letter, digit or mark). Only between two
/// digits one "." stays, so that 3.11 is not 311.
struct WordKey {
  /// A part as a reader sees it. It ends before a joint, before a capital that follows a small
  /// letter or begins a capitalized word ("HTTP", "Server"), and between letters and digits.
  struct Part {
    // Byte ranges.
    std::uint32_t begin = 0;  ///< in the word
    std::uint32_t end = 0;
    std::uint32_t keyBegin = 0;  ///< in the key
    std::uint32_t keyEnd = 0;
    bool isNumber = false;
    bool isBehindJoint = false;
    bool isQualified = false;  ///< behind one of nameSeparators
  };

  std::string text;
  std::vector<Part> parts;
};

/// Longer words are data: they have a key but no parts.
inline constexpr std::size_t mostWordParts = 16;
inline constexpr std::size_t mostCharactersOfParts = 64;

/// Reads the key and the parts of a word of any bytes; none of one that is too long for an index.
/// Returns whether the two ways to write umlauts make different keys. Reuse `key` for many words.
bool readKey(std::string_view word, Umlauts umlauts, WordKey& key);

/// Returns the different keys of a word, the one with bare umlauts first; none if it has neither
/// letters nor digits.
std::vector<std::string> keysOfWord(std::string_view word);

/// Returns the parts of a word as it was typed, the whole word if it is but one.
std::vector<std::string> partsOfWord(std::string_view word);

}  // namespace quorvex
