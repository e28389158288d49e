#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::textsearch {

/// Without the quotation marks around the whole text.
std::string_view withoutQuotes(std::string_view text);

/// "save()" and "save(force=True)" are calls of save.
std::string_view withoutCall(std::string_view text);

/// The part of a title before a dash, a bar or a parenthesis, behind which the name of the book
/// stands, without parameters of templates: "std::vector<T>::at - The C++ book" is std::vector::at.
std::string nameInTitle(std::string_view title);

/// Whether a name ends with other parts, from the beginning of one on.
bool endsWithParts(std::string_view name, std::string_view parts);

/// Whether a name begins with other parts, or its last parts do; not behind a blank, where a word
/// of a sentence begins.
bool hasPartsBeginning(std::string_view name, std::string_view parts);

std::vector<std::string_view> wordsOf(std::string_view text, std::string_view separators);

}  // namespace quorvex::textsearch
