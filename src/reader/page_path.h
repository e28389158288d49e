#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex::reader {

/// A page's path and first anchor.
struct PagePath {
  std::string path;
  std::string anchor;
};

/// Splits a document's path into the page's path and, after a number sign, its first anchor if any.
/// Page names may contain number signs: the anchor starts after the first one that follows ".html"
/// or ".htm", else after the last one, unless the whole ends like a page.
PagePath splitPagePath(std::string_view document);

/// Returns the path of a page below a folder; null if the page path names no file, contains a zero
/// byte or has ".." as a component.
std::optional<std::string> pathBelow(std::string_view folder, std::string_view pagePath);

}  // namespace quorvex::reader
