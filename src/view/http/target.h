#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::view {

/// Undoes the percent-encoding of a path, once. Null unless the result names the same file to
/// everybody: no encoded or reversed slashes, control characters, bad escapes, "." and ".."
/// segments, empty segments (a slash at the beginning and one at the end are allowed), and not more
/// than 4096 bytes as sent.
std::optional<std::string> decodedPath(std::string_view raw);

/// The parameters of a query, decoded; "+" is a blank. Of several equal names the first counts.
std::map<std::string, std::string, std::less<>> parametersOf(std::string_view query);

}  // namespace quorvex::view
