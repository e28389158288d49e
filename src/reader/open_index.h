#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"
#include "common/value.h"
#include "indexfile/index_file_reader.h"
#include "platform/compression.h"
#include "platform/docuvault.h"
#include "platform/textsift.h"
#include "quorvex/help_index.h"
#include "reader/fusion.h"
#include "reader/semantic_pages.h"

namespace quorvex {

/// The content of an open index file. Immutable except for lazily created parts.
class HelpIndex::OpenIndex {
 public:
  /// `archive`: the content of a frame.
  static Result<std::shared_ptr<const OpenIndex>> make(const Result<Data>& archive,
                                                       const FrameLimits& limits);

  const IndexContents& contents() const { return _contents; }
  Expected<SearchResult> search(std::string_view query, const SearchOptions& options) const;
  Expected<std::vector<Hit>> related(std::string_view path, std::size_t count) const;
  std::vector<std::string> pagesWithAnchor(std::string_view name) const;
  HelpPage page(std::size_t number) const;

 private:
  using Ranked = std::vector<reader::ScoredPage>;

  OpenIndex() = default;
  Status openFullText();
  Status takeSemantic(std::shared_ptr<HelpRDXIndex> index);

  std::string languageFor(const SearchOptions& options) const;
  std::string pathOf(std::size_t page) const;
  Ranked byMeaning(const std::vector<HelpRDXAnswer>& answers,
                   const std::vector<std::uint8_t>& allowed) const;
  SearchResult searchSemanticOnly(std::string_view query, std::size_t count) const;
  std::optional<Failure> lack(Ranking ranking) const;
  std::vector<Hit> hits(const Ranked& ranked, std::size_t count,
                        const std::vector<std::string>& terms) const;

  IndexFile _file;
  TSSearchRef _search;
  std::shared_ptr<HelpRDXIndex> _semantic;  ///< also null when it must be ignored
  std::unique_ptr<reader::SemanticPages> _semanticPages;
  IndexContents _contents;
  mutable std::once_flag _anchorsOnce;
  mutable Dictionary _anchors;
};

}  // namespace quorvex
