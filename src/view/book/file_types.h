#pragma once

#include <array>
#include <string_view>

namespace quorvex::view {

/// The pages that stand for their folder.
inline constexpr std::array<const char*, 2> indexPages = {"index.html", "index.htm"};

/// Whether a file is a page of HTML by its name.
bool isHtml(std::string_view path);

/// The media type of a file by the extension of its name; empty if it is not known. Texts have no
/// charset: only they know it.
std::string_view mediaType(std::string_view path);

}  // namespace quorvex::view
