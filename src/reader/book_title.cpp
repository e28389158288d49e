#include "reader/book_title.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

#include "common/files.h"
#include "common/unicode.h"
#include "reader/page_path.h"

namespace quorvex::reader {

std::string bookTitle(const TSSearchRef& search) {
  if (std::string shared = TSSearchCopySharedTitle(search); !shared.empty()) {
    return validUtf8(std::move(shared));
  }
  using Height = std::tuple<std::ptrdiff_t, bool, std::size_t, std::string>;
  Height best;
  std::string title;
  for (std::size_t i = 0; i < TSSearchGetDocumentCount(search); ++i) {
    const auto document = static_cast<TSDocumentID>(i);
    const auto url = TSSearchCopyDocumentURL(search, document);
    if (!url) continue;
    std::string path = splitPagePath(url->path()).path;
    const bool isIndex = lastPathComponent(path).starts_with("index.");
    Height height(std::ranges::count(path, '/'), !isIndex, path.size(), std::move(path));
    if (!title.empty() && best < height) continue;
    std::string own = TSSearchCopyTitle(search, document);
    if (own.empty()) continue;
    best = std::move(height);
    title = std::move(own);
  }
  return validUtf8(std::move(title));
}

}  // namespace quorvex::reader
