#include "reader/semantic_pages.h"

#include "common/files.h"

namespace quorvex::reader {

bool SemanticPages::isPage(std::size_t page, const std::string& subPath) const {
  const std::string path = _pathOf(page);
  return path.ends_with(subPath) &&
         (path.size() == subPath.size() || path[path.size() - subPath.size() - 1] == '/');
}

std::optional<std::size_t> SemanticPages::pageOf(const HelpRDXAnswer& answer) const {
  if (answer.article < _pages && isPage(answer.article, answer.subPath)) return answer.article;
  _namesOnce.run([&] {
    decltype(_pagesByName) pages;
    for (std::size_t page = 0; page < _pages; ++page)
      pages.emplace(lastPathComponent(_pathOf(page)), page);
    _pagesByName = std::move(pages);
  });
  std::optional<std::size_t> found;
  const auto [begin, end] =
      _pagesByName.equal_range(std::string(lastPathComponent(answer.subPath)));
  for (auto entry = begin; entry != end; ++entry) {
    const bool isFirst = !found || entry->second < *found;
    if (isFirst && isPage(entry->second, answer.subPath)) found = entry->second;
  }
  return found;
}

}  // namespace quorvex::reader
