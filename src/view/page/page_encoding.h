#pragma once

#include <string>
#include <string_view>

namespace quorvex::view {

/// Returns an HTML file's page in UTF-8, without byte order mark and with U+FFFD for what is
/// ill-formed. As in browsers, its encoding is that of the byte order mark, or the one declared in
/// the first 1024 bytes; without either, UTF-8 if it is well-formed, else windows-1252. The result
/// is part of `bytes` if nothing had to be converted, else of `converted`.
std::string_view utf8Page(std::string_view bytes, std::string& converted);

}  // namespace quorvex::view
