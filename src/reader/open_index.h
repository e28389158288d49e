#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/once.h"
#include "common/result.h"
#include "common/value.h"
#include "indexfile/index_file_reader.h"
#include "platform/docuvault.h"
#include "platform/textsift.h"
#include "reader/answers.h"
#include "reader/beacon_cache.h"
#include "reader/explanation.h"
#include "reader/fusion.h"
#include "reader/page_texts.h"
#include "reader/semantic_pages.h"

namespace quorvex::reader {

/// What an index file holds.
struct Contents {
  int format = 0;
  std::size_t pages = 0;
  bool fullText = false;
  bool semantic = false;
  bool ignoresSemantic = false;
  std::optional<std::string> language;
  std::optional<std::string> remoteRoot;
};

/// The content of an open index file. Immutable except for lazily created parts.
class OpenIndex {
 public:
  /// `cache`: keeps what is made from searchable items; may be null.
  static Result<std::unique_ptr<const OpenIndex>> make(Result<IndexFile> file,
                                                       const BeaconCache* cache = nullptr);
  /// Opens what was kept of a file of searchable items; null if there is nothing, or nothing sound.
  static std::unique_ptr<const OpenIndex> makeKept(const BeaconCache& cache);

  /// Whoever calls what follows holds a Use until done with the answer, and believes that only if
  /// the index is not damaged then: it may be unpacked on demand.
  FrameStore::Use use() const { return FrameStore::Use(_file.store); }
  bool isDamaged() const { return _file.store != nullptr && _file.store->isDamaged(); }
  /// Returns the same made anew if this is what was kept of a file that has not changed, and has
  /// the damaged one replaced; else null. Lives as long as this.
  const OpenIndex* madeAnew() const;

  const Contents& contents() const { return _contents; }
  /// Returns the title of the whole book; null if it has none.
  const std::optional<std::string>& title() const;
  /// Fails if the index lacks the requested ranking. `texts`: for snippets; may be null.
  Result<quorvex_result> search(std::string_view query, const quorvex_options& options,
                                const PageTexts* texts) const;

  /// What a query finds, before any page is read.
  struct Found {
    quorvex_state state = QUORVEX_STATE_NO_WORDS;
    std::optional<std::string> suggestion;
    std::optional<std::string> searched;
    TSSearchAnswer answer;
    std::vector<ScoredPage> pages;  ///< best first
    std::optional<Explanation> explanation;
  };
  struct FoundPage {
    ScoredPage page;
    const TSNamedPlace* named = nullptr;  ///< the definition that puts it first
  };
  /// Pages put first because they define the name that was asked for.
  static constexpr std::size_t mostNamed = 5;

  /// Does a part of what search() does, to join what several indexes find. Fails without a
  /// full-text index, too.
  Result<Found> findPages(std::string_view query, const quorvex_options& options,
                          const TSCollection* collection = nullptr) const;
  /// Adds what the index holds of the words of a query.
  void addTo(TSCollection& collection, std::string_view query,
             const quorvex_options& options) const;
  /// Puts pages that define the name that was asked for before all that only have its words, of
  /// which `best` is the best score. The pages refer to `found`.
  static std::vector<FoundPage> namedFirst(const Found& found, std::size_t count, double best);
  std::vector<quorvex_hit> hitsWithPlaces(const std::vector<FoundPage>& pages,
                                          const TSSearchAnswer& answer,
                                          const PageTexts* texts) const;

  /// Returns the pages that define names that begin with a text. Fails without a full-text index.
  Result<quorvex_result> names(std::string_view text, std::size_t count,
                               const PageTexts* texts) const;
  /// Returns where the words that a search finds stand in a text. Fails without a full-text index.
  Result<std::vector<quorvex_range>> match(std::string_view query, std::string_view text,
                                           const quorvex_options& options) const;
  /// Fails without a semantic index.
  Result<quorvex_result> related(std::string_view path, std::size_t count) const;
  std::vector<std::string> pagesWithAnchor(std::string_view name) const;
  /// Page `number` of contents().pages.
  quorvex_page page(std::size_t number) const;

 private:
  using Ranked = std::vector<ScoredPage>;

  /// What was kept, and of which file.
  struct Source {
    BeaconCache cache;
    std::string keptName;
  };

  OpenIndex() = default;
  Status open(const BeaconCache* cache);
  Status openFullText(const BeaconCache* cache);
  Result<Data> indexItemsOnce(const BeaconCache* cache);
  Status takeSemantic(std::shared_ptr<HelpRDXIndex> index);
  std::optional<std::string> languageOfBook() const;

  TSSearchOptions searchOptions(const quorvex_options& options) const;
  std::string languageFor(const quorvex_options& options) const;
  std::string pathOf(std::size_t page) const;
  Ranked byMeaning(const std::vector<HelpRDXAnswer>& answers,
                   const std::vector<std::uint8_t>& allowed) const;
  quorvex_result searchSemanticOnly(std::string_view query, const quorvex_options& options) const;
  Status requireFormsFor(quorvex_ranking ranking) const;
  quorvex_hit hitOf(const ScoredPage& ranked, const TSSearchTerms& terms) const;
  std::vector<quorvex_hit> hits(const Ranked& ranked, std::size_t count) const;

  IndexFile _file;
  TSSearchRef _search;
  std::shared_ptr<HelpRDXIndex> _semantic;  ///< also null when it must be ignored
  std::unique_ptr<SemanticPages> _semanticPages;
  Contents _contents;
  mutable Once _titleOnce;
  mutable std::optional<std::string> _title;
  mutable Once _anchorsOnce;
  mutable Dictionary _anchors;
  std::optional<Source> _source;
  mutable Once _madeAnewOnce;
  mutable std::unique_ptr<const OpenIndex> _madeAnew;
};

}  // namespace quorvex::reader
