#pragma once

#include <string>
#include <string_view>

namespace quorvex {

/// How the letters ä, ö, ü, å and ø are written without their marks.
enum class Umlauts {
  bare,     ///< a, o, u, a, o
  digraph,  ///< ae, oe, ue, aa, oe
};

/// Appends a word as it is written with the least care: case-folded, of normal width, and
///
/// - Latin and Greek letters without marks; ł, đ, ħ, ŧ, ø, ı, ð, þ, æ and œ in plain letters;
/// - Cyrillic without stress marks and with е for ё. Other marks of Cyrillic letters make another
///   letter, as й and ї, and stay;
/// - Arabic without vowel signs and tatweel, and with alif for all of its forms with hamza or
/// madda;
///   Hebrew without points;
/// - Japanese without long vowel marks and with large kana for small ones;
/// - Chinese in simplified characters.
///
/// The marks of all other scripts are parts of their letters and stay. Returns whether the two ways
/// to write umlauts differ.
bool appendFolded(std::string_view word, Umlauts umlauts, std::string& folded);

}  // namespace quorvex
