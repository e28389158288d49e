#include "quorvex/help_index.h"

#include "platform/compression.h"
#include "reader/open_index.h"

namespace quorvex {

HelpIndex::HelpIndex(std::shared_ptr<const OpenIndex> index) : _index(std::move(index)) {}

Expected<HelpIndex> HelpIndex::open(const std::string& path) {
  const Result<DecompressedFile> file = decompressFile(path);
  if (!file) {
    return Failure{Failure::Reason::unreadable, path + ": " + file.error().description};
  }
  auto index = OpenIndex::make(file->content, file->limits);
  if (!index) {
    return Failure{Failure::Reason::notAnIndex, path + ": " + index.error().description};
  }
  return HelpIndex(*std::move(index));
}

Expected<HelpIndex> HelpIndex::fromBytes(std::string_view bytes) {
  auto index = OpenIndex::make(decompress(bytes), FrameLimits(bytes.size()));
  if (!index) return Failure{Failure::Reason::notAnIndex, index.error().description};
  return HelpIndex(*std::move(index));
}

const IndexContents& HelpIndex::contents() const {
  return _index->contents();
}

Expected<SearchResult> HelpIndex::search(std::string_view query,
                                         const SearchOptions& options) const {
  return _index->search(query, options);
}

Expected<std::vector<Hit>> HelpIndex::related(std::string_view path, std::size_t count) const {
  return _index->related(path, count);
}

std::vector<std::string> HelpIndex::pagesWithAnchor(std::string_view name) const {
  return _index->pagesWithAnchor(name);
}

HelpPage HelpIndex::page(std::size_t number) const {
  return _index->page(number);
}

}  // namespace quorvex
