#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvex/help_index.h"

namespace quorvex::view {

/// Returns where the question's words stand in `text` (UTF-8, one block of a page per line): byte
/// ranges, ascending and without overlaps.
using Matcher = std::function<std::vector<TextRange>(std::string_view text)>;

inline constexpr std::string_view pageTags =
    "<script src=\"/~quorvex/page.js\"></script>"
    "<link rel=\"stylesheet\" href=\"/~quorvex/page.css\">";
inline constexpr std::string_view markBegin = "<mark class=\"quorvex-mark\">";
inline constexpr std::string_view markEnd = "</mark>";

/// Returns an HTML file's page as it is sent, in UTF-8 without byte order mark: with `pageTags`
/// where they run before anything of the page does, and with marks around what the matcher finds,
/// if there is one. Everything else is as in the file.
std::string pageForReading(std::string_view bytes, const Matcher& matcher);

}  // namespace quorvex::view
