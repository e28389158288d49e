#pragma once

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

}  // namespace quorvex::reader
