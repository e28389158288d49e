#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

// Pieces of JSON (RFC 8259), appended to a text. Ill-formed UTF-8 becomes U+FFFD; control and
// directional characters are escaped, for JSON may go to a terminal too.

void appendJsonString(std::string& out, std::string_view text);
/// The strings with commas between them, without brackets.
void appendJsonStrings(std::string& out, const std::vector<std::string>& texts);
/// With a comma in front.
void appendJsonMember(std::string& out, std::string_view name, std::string_view text);
/// Likewise, or null.
void appendJsonOptional(std::string& out, std::string_view name,
                        const std::optional<std::string>& text);

/// A number with so many decimals, whatever the locale.
std::string decimalText(double number, int decimals = 4);

}  // namespace quorvex
