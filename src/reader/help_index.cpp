#include "quorvex/help_index.h"

#include "platform/compression.h"
#include "reader/open_index.h"

namespace quorvex {

HelpIndex::HelpIndex(std::shared_ptr<const Content> content) : _content(std::move(content)) {}

Expected<HelpIndex> HelpIndex::open(const std::string& path) {
  const Result<DecompressedFile> file = decompressFile(path);
  if (!file) {
    return Failure{Failure::Reason::unreadable, path + ": " + file.error().description};
  }
  auto content = Content::make(file->content, file->limits);
  if (!content) {
    return Failure{Failure::Reason::notAnIndex, path + ": " + content.error().description};
  }
  return HelpIndex(*std::move(content));
}

Expected<HelpIndex> HelpIndex::fromBytes(std::string_view bytes) {
  auto content = Content::make(decompress(bytes), FrameLimits(bytes.size()));
  if (!content) return Failure{Failure::Reason::notAnIndex, content.error().description};
  return HelpIndex(*std::move(content));
}

const IndexContents& HelpIndex::contents() const {
  return _content->contents();
}

Expected<SearchResult> HelpIndex::search(std::string_view query,
                                         const SearchOptions& options) const {
  return _content->search(query, options);
}

Expected<std::vector<Hit>> HelpIndex::related(std::string_view path, std::size_t count) const {
  return _content->related(path, count);
}

std::vector<std::string> HelpIndex::pagesWithAnchor(std::string_view name) const {
  return _content->pagesWithAnchor(name);
}

HelpPage HelpIndex::page(std::size_t number) const {
  return _content->page(number);
}

}  // namespace quorvex
