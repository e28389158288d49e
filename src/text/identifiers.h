#pragma once

#include <cstddef>
#include <string_view>

namespace quorvex {

/// Whether a word looks like a name of program code and not like a word of a language: it has
/// other characters than letters, or capitals behind the first letter.
bool looksLikeCode(std::string_view word);

/// Returns the number of bytes before the last part of a name: "asyncio." in "asyncio.gather".
/// Parts end with one of ". : # / \ >" or a blank.
std::size_t qualifierSize(std::string_view name);

/// Whether a byte belongs to an identifier: a letter, a digit, an underscore, or part of a
/// character beyond ASCII.
bool isIdentifierByte(char byte);

/// Finds an identifier in a text, not as a part of another one.
bool holdsIdentifier(std::string_view text, std::string_view identifier);

}  // namespace quorvex
