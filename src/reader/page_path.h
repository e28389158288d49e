#pragma once

#include <string>
#include <string_view>

namespace quorvex::reader {

/// Where a page is, and its first anchor.
struct PagePath {
  std::string path;
  std::string anchor;
};

/// Takes a document's path apart, which is the page's path and, behind a number sign, its first
/// anchor if it has one. Names of pages may hold number signs: the anchor begins behind the first
/// one that follows ".html" or ".htm", else behind the last one, unless the whole ends like a page.
PagePath splitPagePath(std::string_view document);

}  // namespace quorvex::reader
