#include "reader/open_index.h"

#include <algorithm>
#include <span>

#include "common/files.h"
#include "common/locale.h"
#include "common/unicode.h"
#include "indexfile/keys.h"
#include "platform/textsift.h"
#include "reader/book_title.h"
#include "reader/items_index.h"
#include "reader/page_path.h"
#include "reader/quotation.h"

namespace quorvex::reader {

namespace {

/// Of files with searchable items.
constexpr int formatOfItems = 2;
/// The minimum number of pages joined per ranking; later ones would not come first.
constexpr std::size_t fewestJoined = 200;
/// The number of pages that tell whether words answer better than phrases.
constexpr std::size_t fewestRanked = 5;
/// Places of one hit.
constexpr std::size_t mostPlaces = 3;

std::string text(const Dictionary& properties, std::string_view key) {
  const Value* value = find(properties, key);
  return value != nullptr && value->string() != nullptr ? validUtf8(*value->string())
                                                        : std::string();
}

bool isToBeIgnored(const HelpRDXIndex& index) {
  const std::optional<Value> flag = index.objectForAttribute(HelpRDXIndexAttributeIgnoreRDXKey);
  return flag && flag->boolean() != nullptr && *flag->boolean();
}

quorvex_state publicState(TSSearchState state) {
  switch (state) {
    case TSSearchState::answered:
      return QUORVEX_STATE_ANSWERED;
    case TSSearchState::onlyStopWords:
      return QUORVEX_STATE_ONLY_STOP_WORDS;
    case TSSearchState::onlyExcluded:
      return QUORVEX_STATE_ONLY_EXCLUDED;
    case TSSearchState::noWords:
      break;
  }
  return QUORVEX_STATE_NO_WORDS;
}

quorvex_place publicPlace(const TSFoundPlace& found) {
  quorvex_place place;
  place.fragment = validUtf8(found.fragment);
  for (const std::string& heading : found.headings)
    place.headings.texts.push_back(validUtf8(heading));
  place.score = found.score;
  return place;
}

/// Lets near copies of better pages step back, so that they do not fill the list.
void demoteCopies(const TSSearchRef& search, std::vector<ScoredPage>& ranked) {
  constexpr std::size_t mostCompared = 50;
  constexpr double partOfCopy = 0.6;
  const auto end =
      ranked.begin() + static_cast<std::ptrdiff_t>(std::min(mostCompared, ranked.size()));
  for (auto page = ranked.begin(); page != end; ++page) {
    const auto isCopied = [&](const ScoredPage& better) {
      return TSSearchAreNearCopies(search, static_cast<TSDocumentID>(better.page),
                                   static_cast<TSDocumentID>(page->page));
    };
    if (std::any_of(ranked.begin(), page, isCopied)) page->score *= partOfCopy;
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const ScoredPage& a, const ScoredPage& b) { return a.score > b.score; });
}

std::vector<TSFoundPlace> placesOf(const TSSearchRef& search, const OpenIndex::FoundPage& page,
                                   const TSSearchAnswer& answer) {
  std::vector<TSFoundPlace> places;
  if (page.named != nullptr) {
    if (auto place = TSSearchCopyPlace(search, *page.named)) places.push_back(*std::move(place));
  }
  const auto document = static_cast<TSDocumentID>(page.page.page);
  for (TSFoundPlace& place : TSSearchFindPlaces(search, answer, document, mostPlaces)) {
    const bool isNew = places.empty() || places.front().fragment != place.fragment;
    if (isNew && places.size() < mostPlaces) places.push_back(std::move(place));
  }
  return places;
}

/// The hits of an index without texts of the pages.
std::vector<quorvex_hit> hitsWithoutPages(const std::vector<HelpRDXAnswer>& answers) {
  std::vector<quorvex_hit> hits;
  hits.reserve(answers.size());
  for (const HelpRDXAnswer& answer : answers) {
    quorvex_hit hit;
    hit.page.path = "/" + answer.subPath;
    hit.page.title = validUtf8(answer.title);
    hit.score = answer.similarity;
    hits.push_back(std::move(hit));
  }
  return hits;
}

}  // namespace

Result<std::unique_ptr<const OpenIndex>> OpenIndex::make(Result<IndexFile> file,
                                                         const BeaconCache* cache) {
  if (!file) return file.error();
  std::unique_ptr<OpenIndex> index(new OpenIndex);
  index->_file = *std::move(file);
  if (const Status opened = index->open(cache); !opened) return opened.error();
  return std::unique_ptr<const OpenIndex>(std::move(index));
}

std::unique_ptr<const OpenIndex> OpenIndex::makeKept(const BeaconCache& cache) {
  std::optional<BeaconCache::Kept> kept = cache.find();
  if (!kept) return nullptr;
  std::optional<IndexFile> file = openByTable(std::move(kept->file));
  const bool isKeptOne = file && file->fullText && file->items.empty();
  if (isKeptOne) {
    std::unique_ptr<OpenIndex> index(new OpenIndex);
    index->_file = *std::move(file);
    if (index->open(nullptr)) {
      index->_contents.format = formatOfItems;
      index->_source = Source{cache, std::move(kept->name)};
      return index;
    }
  }
  BeaconCache::discard(kept->name);
  return nullptr;
}

const OpenIndex* OpenIndex::madeAnew() const {
  if (!_source) return nullptr;
  _madeAnewOnce.run([this] {
    const BeaconCache& cache = _source->cache;
    BeaconCache::discard(_source->keptName);
    Result<OpenedIndexFile> opened = openIndexFile(cache.path());
    if (!opened) return;
    auto index = make(std::move(opened->file), &cache);
    if (index && cache.isOfSameFile()) _madeAnew = *std::move(index);
  });
  return _madeAnew.get();
}

Status OpenIndex::open(const BeaconCache* cache) {
  requireMemoryForIcu();  // words are about to be cut
  const FrameStore::Use inUse = use();
  _contents.remoteRoot = _file.remoteRoot;
  const std::optional<Data>& semanticData = _file.semantic;
  if (const Status opened = openFullText(cache); !opened) return opened.error();
  if (semanticData) {
    const Status taken = takeSemantic(HelpRDXIndex::HelpRDXIndexWithVersionedData(*semanticData));
    if (!taken) return taken.error();
  }
  _contents.language = languageOfBook();
  if (_contents.ignoresSemantic) _semantic = nullptr;
  return isDamaged() ? Status(Error{"The index is damaged"}) : okStatus();
}

Status OpenIndex::openFullText(const BeaconCache* cache) {
  _contents.format = _file.items.empty() ? 1 : formatOfItems;
  std::optional<Data> index = _file.fullText;
  if (!_file.items.empty()) {
    Result<Data> made = indexItemsOnce(cache);
    if (!made) return made.error();
    index = *std::move(made);
  }
  if (!index) return okStatus();
  _search = TSSearchCreateWithIndex(TSIndexOpenWithData(*index, std::nullopt));
  if (_search == nullptr) return Error{"The full-text index is damaged"};
  _contents.fullText = true;
  _contents.pages = TSSearchGetDocumentCount(_search);
  return okStatus();
}

/// Makes the full-text index and the anchors from the items, and has them kept for next time.
Result<Data> OpenIndex::indexItemsOnce(const BeaconCache* cache) {
  Dictionary index;
  {
    const Result<Array> items = readItems(_file);
    if (!items) return items.error();
    ItemsIndex made = indexItems(*items);
    index.emplace(fullTextIndexKey, std::move(made.fullText));
    index.emplace(anchorTableKey, std::move(made.anchors));
  }
  if (_file.semantic) index.emplace(semanticIndexKey, *_file.semantic);
  if (_file.remoteRoot) index.emplace(remoteRootKey, *_file.remoteRoot);
  if (cache != nullptr) cache->keep(index);
  _anchors = std::move(*index.find(anchorTableKey)->second.dictionary());
  return *index.find(fullTextIndexKey)->second.data();
}

Status OpenIndex::takeSemantic(std::shared_ptr<HelpRDXIndex> index) {
  _semantic = std::move(index);
  if (_semantic == nullptr) return Error{"The semantic index is damaged"};
  _contents.semantic = true;
  _contents.ignoresSemantic = isToBeIgnored(*_semantic);
  _semanticPages = std::make_unique<SemanticPages>(
      _contents.pages, [this](std::size_t page) { return pathOf(page); });
  return okStatus();
}

/// The locale that the semantic index states; null if there is none.
std::optional<std::string> OpenIndex::languageOfBook() const {
  if (_semantic != nullptr) {
    if (std::string language = _semantic->language(); !language.empty()) {
      return validUtf8(std::move(language));
    }
  }
  return std::nullopt;
}

const std::optional<std::string>& OpenIndex::title() const {
  _titleOnce.run([this] {
    if (std::string title = bookTitle(_search); !title.empty()) _title = std::move(title);
  });
  return _title;
}

std::string OpenIndex::pathOf(std::size_t page) const {
  const auto url = TSSearchCopyDocumentURL(_search, static_cast<TSDocumentID>(page));
  return url ? splitPagePath(url->path()).path : std::string();
}

quorvex_page OpenIndex::page(std::size_t number) const {
  quorvex_page page;
  const auto document = static_cast<TSDocumentID>(number);
  if (const std::optional<URL> url = TSSearchCopyDocumentURL(_search, document)) {
    PagePath path = splitPagePath(url->path());
    page.path = std::move(path.path);
    page.firstAnchor = validUtf8(std::move(path.anchor));
  }
  page.title = validUtf8(TSSearchCopyTitle(_search, document));
  if (const auto properties = TSSearchCopyDocumentProperties(_search, document)) {
    page.description = text(*properties, descriptionProperty);
  }
  return page;
}

std::string OpenIndex::languageFor(const quorvex_options& options) const {
  if (options.language) return *options.language;
  if (!_contents.language) return {};
  const std::optional<Locale> locale = Locale::withIdentifier(*_contents.language);
  return locale ? locale->language() : std::string();
}

Status OpenIndex::requireFormsFor(quorvex_ranking ranking) const {
  if (ranking == QUORVEX_RANKING_SEMANTIC ||
      (ranking == QUORVEX_RANKING_BEST && _search == nullptr)) {
    if (_contents.ignoresSemantic) {
      return Error{"The index marks its semantic index as not worth using"};
    }
    if (_semantic == nullptr) return Error{"The index contains no semantic index"};
  }
  if (ranking == QUORVEX_RANKING_FULL_TEXT && _search == nullptr) {
    return Error{"The index contains no full-text index"};
  }
  return okStatus();
}

OpenIndex::Ranked OpenIndex::byMeaning(const std::vector<HelpRDXAnswer>& answers,
                                       const std::vector<std::uint8_t>& allowed) const {
  Ranked ranked;
  for (const HelpRDXAnswer& answer : answers) {
    const std::optional<std::size_t> page = _semanticPages->pageOf(answer);
    if (page && (allowed.empty() || allowed[*page] != 0)) {
      ranked.push_back({*page, answer.similarity});
    }
  }
  return ranked;
}

quorvex_result OpenIndex::searchSemanticOnly(std::string_view query,
                                             const quorvex_options& options) const {
  quorvex_result result;
  if (trimWhitespaceAndNewlines(query).empty()) return result;
  result.state = QUORVEX_STATE_ANSWERED;
  result.hits = hitsWithoutPages(_semantic->articlesNearestToText(query, options.count));
  if (options.explained) explainByMeaning(result);
  return result;
}

TSSearchOptions OpenIndex::searchOptions(const quorvex_options& options) const {
  return {.language = languageFor(options),
          .lastWordIsPrefix = options.lastWordIsPrefix,
          .isPlainText = options.isPlainText,
          .phrasesAreWords = options.phrasesAreWords};
}

void OpenIndex::addTo(TSCollection& collection, std::string_view query,
                      const quorvex_options& options) const {
  TSSearchAddToCollection(_search, query, searchOptions(options), collection);
}

Result<OpenIndex::Found> OpenIndex::findPages(std::string_view query,
                                              const quorvex_options& options,
                                              const TSCollection* collection) const {
  if (_search == nullptr) return Error{"The index contains no full-text index"};
  if (const Status has = requireFormsFor(options.ranking); !has) return has.error();
  const std::size_t joined = std::max(options.count, fewestJoined);
  Found found;
  TSSearchAnswer& answer = found.answer;
  TSSearchOptions set = searchOptions(options);
  set.collection = collection;
  // Of several books, the best page by words tells how much each counts.
  const std::size_t wanted = options.ranking != QUORVEX_RANKING_SEMANTIC ? joined
                             : collection != nullptr                     ? 1
                                                                         : 0;
  answer = TSSearchFindDocuments(_search, query, set, wanted);
  found.state = publicState(answer.state);
  if (found.state != QUORVEX_STATE_ANSWERED) return found;
  if (answer.suggestion) found.suggestion = validUtf8(*answer.suggestion);
  if (answer.searchedInstead) found.searched = validUtf8(*answer.searchedInstead);

  Ranked words;
  if (options.ranking != QUORVEX_RANKING_SEMANTIC) {
    for (const TSSearchHit& hit : answer.hits)
      words.push_back({hit.document, hit.score});
  }
  Ranked meaning;
  const bool wordsAlone = options.ranking == QUORVEX_RANKING_FULL_TEXT ||
                          (options.ranking == QUORVEX_RANKING_BEST && options.lastWordIsPrefix);
  const double meaningPart = semanticPart(answer.wordCount, answer.coverage);
  const bool isMeaningWanted = !wordsAlone && (meaningPart > 0 || words.empty());
  if (isMeaningWanted && _semantic != nullptr) {
    // Disallowed pages are removed from the answers, so more are requested.
    const std::size_t nearest = answer.allowed.empty() ? joined : _contents.pages;
    meaning = byMeaning(_semantic->articlesNearestToText(answer.words, nearest), answer.allowed);
  }
  if (options.ranking == QUORVEX_RANKING_SEMANTIC) answer.named.clear();
  found.pages = fuse(words, meaning, meaningPart);
  demoteCopies(_search, found.pages);
  if (options.explained) {
    const RankedBy rankedBy = wordsAlone                                    ? RankedBy::words
                              : options.ranking == QUORVEX_RANKING_SEMANTIC ? RankedBy::meaning
                              : _semantic == nullptr                        ? RankedBy::onlyWords
                                                                            : RankedBy::both;
    found.explanation.emplace(_search, answer, words, meaning, rankedBy);
  }
  return found;
}

std::vector<OpenIndex::FoundPage> OpenIndex::namedFirst(const Found& found, std::size_t count,
                                                        double best) {
  const std::span<const TSNamedPlace> names = found.answer.named;
  const std::size_t namedCount = std::min({names.size(), count, mostNamed});
  std::vector<FoundPage> pages;
  for (const TSNamedPlace& named : names.first(namedCount))
    pages.push_back({{named.document, best + named.quality}, &named});
  for (const ScoredPage& page : found.pages) {
    if (pages.size() >= count) break;
    const auto isSame = [&](const FoundPage& other) { return other.page.page == page.page; };
    if (std::ranges::none_of(std::span(pages).first(namedCount), isSame)) pages.push_back({page});
  }
  return pages;
}

Result<quorvex_result> OpenIndex::search(std::string_view query, const quorvex_options& options,
                                         const PageTexts* texts) const {
  if (_search == nullptr) {
    if (const Status has = requireFormsFor(options.ranking); !has) return has.error();
    return searchSemanticOnly(query, options);
  }
  Result<Found> found = findPages(query, options);
  if (!found) return found.error();
  quorvex_result result;
  result.state = found->state;
  result.suggestion = std::move(found->suggestion);
  result.searched = std::move(found->searched);
  const double best = found->pages.empty() ? 0 : found->pages.front().score;
  result.hits = hitsWithPlaces(namedFirst(*found, options.count, best), found->answer, texts);
  if (found->explanation) {
    found->explanation->addTo(result.hits);
    result.explanation.texts = found->explanation->lines();
  }
  return result;
}

quorvex_hit OpenIndex::hitOf(const ScoredPage& ranked, const TSSearchTerms& terms) const {
  quorvex_hit hit;
  hit.page = page(ranked.page);
  hit.number = ranked.page;
  hit.score = ranked.score;
  hit.titleMatches = publicRanges(TSSearchFindTerms(_search, terms, hit.page.title));
  hit.descriptionMatches = publicRanges(TSSearchFindTerms(_search, terms, hit.page.description));
  return hit;
}

std::vector<quorvex_hit> OpenIndex::hits(const Ranked& ranked, std::size_t count) const {
  std::vector<quorvex_hit> hits;
  for (std::size_t i = 0; i < std::min(count, ranked.size()); ++i)
    hits.push_back(hitOf(ranked[i], {}));
  return hits;
}

std::vector<quorvex_hit> OpenIndex::hitsWithPlaces(const std::vector<FoundPage>& pages,
                                                   const TSSearchAnswer& answer,
                                                   const PageTexts* texts) const {
  std::vector<quorvex_hit> hits;
  std::vector<PageToQuote> quoted;
  for (const FoundPage& page : pages) {
    quorvex_hit& hit = hits.emplace_back(hitOf(page.page, answer.terms));
    if (page.named != nullptr) hit.name = validUtf8(page.named->name);
    std::vector<TSFoundPlace> places = placesOf(_search, page, answer);
    for (const TSFoundPlace& place : places)
      hit.places.push_back(publicPlace(place));
    if (texts != nullptr && !places.empty()) {
      quoted.push_back({.document = static_cast<TSDocumentID>(page.page.page),
                        .hit = hits.size() - 1,
                        .places = std::move(places)});
    }
  }
  if (texts != nullptr) addSnippets(_search, *texts, answer.terms, quoted, hits);
  return hits;
}

Result<quorvex_result> OpenIndex::names(std::string_view text, std::size_t count,
                                        const PageTexts* texts) const {
  if (_search == nullptr) return Error{"The index contains no full-text index"};
  quorvex_result result;
  result.state = QUORVEX_STATE_ANSWERED;
  std::vector<PageToQuote> quoted;
  for (const TSNamedPlace& named : TSSearchFindNames(_search, text, count)) {
    quorvex_hit& hit = result.hits.emplace_back(hitOf({named.document, named.quality}, {}));
    hit.name = validUtf8(named.name);
    auto place = TSSearchCopyPlace(_search, named);
    if (!place) continue;
    hit.places.push_back(publicPlace(*place));
    std::vector<TSFoundPlace> places;
    places.push_back(*std::move(place));
    quoted.push_back(
        {.document = named.document, .hit = result.hits.size() - 1, .places = std::move(places)});
  }
  if (texts != nullptr) addSnippets(_search, *texts, {}, quoted, result.hits);
  return result;
}

Result<std::vector<quorvex_range>> OpenIndex::match(std::string_view query, std::string_view text,
                                                    const quorvex_options& options) const {
  if (_search == nullptr) return Error{"The index contains no full-text index"};
  // Ranked like a search, since only that tells whether a phrase is searched for again as words.
  const TSSearchAnswer answer =
      TSSearchFindDocuments(_search, query, searchOptions(options), fewestRanked);
  if (answer.hits.empty()) return std::vector<quorvex_range>();
  return publicRanges(TSSearchFindTerms(_search, answer.terms, text));
}

Result<quorvex_result> OpenIndex::related(std::string_view path, std::size_t count) const {
  if (const Status has = requireFormsFor(QUORVEX_RANKING_SEMANTIC); !has) return has.error();
  const std::string wanted = splitPagePath(path).path;
  // The semantic index omits the folders above a language's pages. They are few; each one tried
  // takes a walk over all pages.
  constexpr std::size_t mostFolders = 32;
  std::vector<HelpRDXAnswer> answers;
  std::string_view subPath = wanted;
  for (std::size_t tried = 0; answers.empty() && !subPath.empty() && tried <= mostFolders;
       ++tried) {
    const std::size_t slash = subPath.find('/');
    if (slash != 0) answers = _semantic->articlesNearestToArticle(subPath, count);
    subPath = slash == std::string_view::npos ? std::string_view() : subPath.substr(slash + 1);
  }
  quorvex_result result;
  result.state = QUORVEX_STATE_ANSWERED;
  result.hits =
      _search == nullptr ? hitsWithoutPages(answers) : hits(byMeaning(answers, {}), count);
  return result;
}

std::vector<std::string> OpenIndex::pagesWithAnchor(std::string_view name) const {
  _anchorsOnce.run([this] {
    if (_file.anchors.empty()) return;
    Result<Dictionary> anchors = readAnchors(_file);
    if (anchors) _anchors = *std::move(anchors);
  });
  std::vector<std::string> pages;
  const Value* found = find(_anchors, name);
  if (found == nullptr || found->array() == nullptr) return pages;
  for (const Value& page : *found->array()) {
    if (page.string() != nullptr) pages.push_back(*page.string());
  }
  return pages;
}

}  // namespace quorvex::reader
