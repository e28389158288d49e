#include <algorithm>
#include <set>

#include "common/idle_pool.h"
#include "fulltext/format/analysis_properties.h"
#include "fulltext/searching/document_filter.h"
#include "fulltext/searching/document_ranking.h"
#include "fulltext/searching/explained_words.h"
#include "fulltext/searching/name_finder.h"
#include "fulltext/searching/passages.h"
#include "fulltext/searching/proximity.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/ranking.h"
#include "fulltext/searching/searched_words.h"
#include "fulltext/searching/term_places.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_locator.h"
#include "fulltext/searching/word_lookup.h"
#include "fulltext/searching/word_terms.h"
#include "fulltext/textsift_index.h"
#include "platform/textsift.h"

namespace quorvex {

using namespace textsearch;

namespace {

/// Names offered while one is being typed.
constexpr std::size_t mostNamedByBeginning = 5;
/// While a query is typed, it is answered at each key.
constexpr LookLimits limitsOfKey = {.looks = 512, .placeBytes = 300'000};

/// Working memory of one query, kept for the next.
struct Workspace {
  explicit Workspace(const std::string& termCharacters) : tokenizer(termCharacters) {}

  Stemmer& stemmerFor(const std::string& wanted) {
    if (wanted != language) {
      stemmer = Stemmer(wanted);
      language = wanted;
    }
    return stemmer;
  }

  Tokenizer tokenizer;
  DocumentRankingScratch ranking;
  Stemmer stemmer{std::string_view()};
  std::string language;
};

AnalysisSettings settingsOf(const IndexReader& index) {
  return analysisSettings(index.description().analysisProperties).value_or(AnalysisSettings());
}

}  // namespace

class TSSearch {
 public:
  explicit TSSearch(std::shared_ptr<const IndexReader> index)
      : _index(std::move(index)),
        _filter(settingsOf(*_index)),
        _titles(*_index),
        _lookup(*_index, _titles),
        _documentFilter(*_index, _titles, _lookup),
        _names(*_index, _titles),
        _ranker(*_index, _titles),
        _ranking(*_index, _titles) {}

  const IndexReader& index() const { return *_index; }
  const TitleIndex& titles() const { return _titles; }

  TSSearchAnswer answer(std::string_view text, const TSSearchOptions& options,
                        std::size_t count) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    const Query query = parseQuery(text, _filter, workspace->tokenizer, readingOf(options));
    TSSearchAnswer answer = answerTo(query, text, options, count, *workspace);
    const bool mayAskAgain = query.hasPhrases() && count > 0 && options.collection == nullptr;
    if (mayAskAgain && (answer.hits.empty() || query.quotesSingleWords())) {
      TSSearchOptions asWords = options;
      asWords.phrasesAreWords = true;
      const Query words = parseQuery(text, _filter, workspace->tokenizer, readingOf(asWords));
      TSSearchAnswer other = answerTo(words, text, asWords, count, *workspace);
      if (isBetter(other, answer)) answer = std::move(other);
    }
    _workspaces.giveBack(std::move(workspace));
    return answer;
  }

  void addTo(TSCollection& collection, std::string_view text,
             const TSSearchOptions& options) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    const Query query = parseQuery(text, _filter, workspace->tokenizer, readingOf(options));
    WordCollector collector(*_index, _titles, _lookup, _filter, options.language,
                            workspace->stemmerFor(options.language));
    collector.collect(query, text, false, nullptr);
    _ranker.addTo(collection, collector.takeWords().words);
    // What an index leaves out, such as the stop words of its language, nearly every text has.
    std::set<std::string> leftOut;
    workspace->tokenizer.reset(text.substr(0, maximumQuerySize));
    for (Token token; workspace->tokenizer.next(token);) {
      if (_filter.leavesOut(token.term)) {
        leftOut.insert(WordLookup::wordKey(Matching::inflected, token.term));
      }
    }
    for (const std::string& word : leftOut) {
      collection.words[word].inTexts += _index->documents().size();
      collection.words[word].inTitles += _index->documents().size();
    }
    _workspaces.giveBack(std::move(workspace));
  }

  std::vector<TSFoundPlace> placesIn(const TSSearchedWords& searched, std::uint32_t document,
                                     std::size_t count) const {
    const PlacesOfDocument places(*_index, document);
    if (!places.haveFragments()) return {};
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    std::vector<TSFoundPlace> found;
    {
      const WordCodes codes(*_index, searched.words, workspace->ranking.codes);
      Occurrences occurrences;
      codes.find(document, occurrences);
      PassageFinder passages(_ranker, searched.words, searched.phrases);
      const std::vector<Passage> ranked = passages.find(places, occurrences);
      std::vector<std::uint32_t> seen;
      for (const Passage& passage : ranked) {
        if (found.size() == count) break;
        // What stands above all places is mostly the way around the book.
        if (passage.place == PlacesOfDocument::none && ranked.size() > 1) continue;
        const std::uint32_t linked = places.linked(passage.place);
        if (std::ranges::find(seen, linked) != seen.end()) continue;
        seen.push_back(linked);
        TSFoundPlace place = foundPlace(places, passage.place);
        place.score = double{passage.distinction};
        place.begin = passage.begin;
        place.end = passage.end;
        found.push_back(std::move(place));
      }
    }
    _workspaces.giveBack(std::move(workspace));
    return found;
  }

  std::optional<TSFoundPlace> place(const TSNamedPlace& named) const {
    const PlacesOfDocument places(*_index, named.document);
    const bool isPage = named.place == TSNamedPlace::pageItself;
    const std::uint32_t number = isPage ? places.headingOfPage() : named.place;
    if (number >= places.size() || !places.haveFragments()) return std::nullopt;
    TSFoundPlace place = foundPlace(places, number);
    place.score = named.quality;
    place.begin = place.end = places[number].position;
    return place;
  }

  std::vector<TSNamedPlace> namesBeginningWith(std::string_view text, std::size_t count) const {
    std::vector<TSNamedPlace> names;
    for (const NameMatch& match : _names.beginningWith(text, count))
      names.push_back(namedPlace(match));
    return names;
  }

  std::optional<TSLocatedWords> locate(std::uint32_t document, const TSTextPart& part,
                                       std::uint32_t begin, std::uint32_t end,
                                       std::size_t margin) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    WordLocator locator(*_index, _filter, workspace->tokenizer);
    std::optional<TSLocatedWords> found = locator.locate(document, part, begin, end, margin);
    _workspaces.giveBack(std::move(workspace));
    return found;
  }

  std::vector<TSTextRange> placesOf(const TSSearchTerms& terms, std::string_view text) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    TermPlaces places(terms);
    workspace->tokenizer.reset(text);
    for (Token token; workspace->tokenizer.next(token);)
      places.add(token);
    _workspaces.giveBack(std::move(workspace));
    return places.take();
  }

 private:
  std::unique_ptr<Workspace> takeWorkspace() const {
    return _workspaces.take(
        [this] { return std::make_unique<Workspace>(_filter.termCharacters()); });
  }

  QueryReading readingOf(const TSSearchOptions& options) const {
    return {.isPlainText = options.isPlainText,
            .lastIsPrefix = options.lastWordIsPrefix,
            .phrasesAreWords = options.phrasesAreWords,
            .isName = [this](std::string_view run) { return _names.isName(run); }};
  }

  /// `place` may be PlacesOfDocument::none.
  static TSFoundPlace foundPlace(const PlacesOfDocument& places, std::uint32_t place) {
    TSFoundPlace found;
    const std::uint32_t linked = places.linked(place);
    if (linked != PlacesOfDocument::none) {
      found.fragment = places.fragment(linked);
      found.start = places[linked].position;
    }
    if (place != PlacesOfDocument::none) found.headings = places.headings(place);
    return found;
  }

  static TSSearchState stateOf(const Query& query) {
    if (std::ranges::any_of(query.clauses, std::not_fn(&QueryClause::isExcluded))) {
      return TSSearchState::answered;
    }
    if (!query.clauses.empty()) return TSSearchState::onlyExcluded;
    return query.hasLeftOutWords ? TSSearchState::onlyStopWords : TSSearchState::noWords;
  }

  bool knowsOperatorOf(const Query& query) const {
    return std::ranges::any_of(query.operators, [&](const QueryWord& each) {
      return _lookup.findOperator(each.term) != nullptr;
    });
  }

  /// Whether what was found without phrases holds more of the query.
  static bool isBetter(const TSSearchAnswer& words, const TSSearchAnswer& phrases) {
    constexpr double clearly = 0.05;
    if (words.hits.empty()) return false;
    return phrases.hits.empty() || words.coverage > phrases.coverage + clearly;
  }

  TSSearchAnswer answerTo(const Query& query, std::string_view text, const TSSearchOptions& options,
                          std::size_t count, Workspace& workspace) const {
    TSSearchAnswer answer;
    answer.state = knowsOperatorOf(query) ? TSSearchState::answered : stateOf(query);
    if (answer.state == TSSearchState::onlyStopWords) findLeftOutWords(text, count, answer);
    if (answer.state != TSSearchState::answered || !answer.hits.empty()) return answer;
    WordCollector collector(*_index, _titles, _lookup, _filter, options.language,
                            workspace.stemmerFor(options.language));
    // Prose has names and rare words that are no mistakes.
    collector.collect(query, text, !options.isPlainText, options.collection);
    const auto searched = std::make_shared<const TSSearchedWords>(collector.takeWords());
    answer.searched = searched;
    std::vector<Replacement> replacements = collector.replacements();
    if (!replacements.empty()) answer.suggestion = replaced(text, replacements);
    std::erase_if(replacements, std::not_fn(&Replacement::isMade));
    if (!replacements.empty()) answer.searchedInstead = replaced(text, replacements);
    if (options.phrasesAreWords) {
      answer.searchedInstead =
          withoutQuotationMarks(answer.searchedInstead.value_or(std::string(text)));
    }
    takeWords(query, text, replacements, *searched, answer);
    answer.allowed =
        _documentFilter.allowed(query, options.language, workspace.stemmerFor(options.language));
    findNames(answer.searchedInstead ? *answer.searchedInstead : text, options, workspace, answer);
    const Ranker ranker =
        options.collection != nullptr ? _ranker.within(*options.collection) : _ranker;
    if (count > 0) rank(*searched, ranker, count, workspace, answer);
    return answer;
  }

  /// The titles and names have the words that the texts lack.
  void findLeftOutWords(std::string_view text, std::size_t count, TSSearchAnswer& answer) const {
    for (const NameMatch& match : _names.holding(text, count)) {
      if (isOnlyListed(match)) continue;
      answer.hits.push_back({match.at.document, double{match.quality}});
      if (match.quality >= NameFinder::certain) answer.named.push_back(namedPlace(match));
    }
    if (!answer.hits.empty()) answer.state = TSSearchState::answered;
  }

  static void takeWords(const Query& query, std::string_view text,
                        const std::vector<Replacement>& replacements,
                        const TSSearchedWords& searched, TSSearchAnswer& answer) {
    for (const QueryClause& clause : query.clauses) {
      if (clause.isExcluded) continue;
      for (const QueryWord& word : clause.words) {
        if (answer.wordCount++ > 0) answer.words += ' ';
        const auto other = std::ranges::find(replacements, word.begin, &Replacement::begin);
        answer.words += other != replacements.end()
                            ? std::string_view(other->text)
                            : text.substr(word.begin, word.end - word.begin);
      }
    }
    answer.terms = termsOf(searched.words);
  }

  /// A list of links, such as a printed index, has the names that other pages define.
  bool isOnlyListed(const NameMatch& match) const {
    constexpr std::uint8_t mostLinks = 128;
    if (match.at.place == TSNamedPlace::pageItself) return false;
    const std::optional<IndexTraits> traits = _index->traits(match.at.document);
    return traits && traits->linkShare >= mostLinks;
  }

  void findNames(std::string_view text, const TSSearchOptions& options, Workspace& workspace,
                 TSSearchAnswer& answer) const {
    const LookLimits limits = options.lastWordIsPrefix ? limitsOfKey : LookLimits();
    std::vector<NameMatch> matches = _names.find(text, workspace.tokenizer, limits);
    const auto isDoubtful = [&](const NameMatch& match) {
      const auto& allowed = answer.allowed;
      return match.quality < NameFinder::certain || isOnlyListed(match) ||
             (!allowed.empty() && allowed[match.at.document] == 0);
    };
    std::erase_if(matches, isDoubtful);
    // Among several words, the last one begins too many names.
    const bool isOneWord = text.find(' ') == text.npos;
    if (matches.empty() && options.lastWordIsPrefix && isOneWord) {
      matches = _names.beginningWith(text, mostNamedByBeginning, limits);
      std::erase_if(matches, isDoubtful);
    }
    for (const NameMatch& match : matches)
      answer.named.push_back(namedPlace(match));
  }

  static TSNamedPlace namedPlace(const NameMatch& match) {
    return {match.at.document, match.at.place, double{match.quality}, match.name};
  }

  void rank(const TSSearchedWords& searched, const Ranker& ranker, std::size_t count,
            Workspace& workspace, TSSearchAnswer& answer) const {
    constexpr std::size_t mostCounted = 5;
    const std::vector<RankedDocument> best =
        _ranking.best(ranker, searched, answer.allowed, count, workspace.ranking);
    for (const RankedDocument& ranked : best)
      answer.hits.push_back({ranked.document, double{ranked.score}, ranked.parts});
    const std::size_t counted = std::min(best.size(), mostCounted);
    for (std::size_t i = 0; i < counted; ++i)
      answer.coverage += double{best[i].coverage} / static_cast<double>(counted);
    if (searched.unknown == 0) return;
    const auto known = static_cast<double>(searched.words.size());
    answer.coverage *= known / (known + static_cast<double>(searched.unknown));
  }

  std::shared_ptr<const IndexReader> _index;
  WordFilter _filter;
  TitleIndex _titles;
  WordLookup _lookup;
  DocumentFilter _documentFilter;
  NameFinder _names;
  Ranker _ranker;
  DocumentRanking _ranking;
  mutable IdlePool<Workspace> _workspaces;
};

TSSearchRef TSSearchCreateWithIndex(const TSIndexRef& index) {
  if (index == nullptr || index->reader == nullptr) return nullptr;
  return std::make_shared<const TSSearch>(index->reader);
}

void TSSearchAddToCollection(const TSSearchRef& search, std::string_view query,
                             const TSSearchOptions& options, TSCollection& collection) {
  if (search != nullptr) search->addTo(collection, query, options);
}

TSSearchAnswer TSSearchFindDocuments(const TSSearchRef& search, std::string_view query,
                                     const TSSearchOptions& options, std::size_t count) {
  return search == nullptr ? TSSearchAnswer() : search->answer(query, options, count);
}

bool TSSearchAreNearCopies(const TSSearchRef& search, TSDocumentID first, TSDocumentID second) {
  if (search == nullptr) return false;
  const std::optional<IndexTraits> a = search->index().traits(first);
  const std::optional<IndexTraits> b = search->index().traits(second);
  return a && b && areNearCopies(a->sketch, b->sketch);
}

std::vector<TSExplainedWord> TSSearchExplainWords(const TSSearchRef& search,
                                                  const TSSearchAnswer& answer) {
  if (search == nullptr || answer.searched == nullptr) return {};
  return explainWords(search->index(), search->titles(), *answer.searched);
}

std::vector<TSFoundPlace> TSSearchFindPlaces(const TSSearchRef& search,
                                             const TSSearchAnswer& answer, TSDocumentID document,
                                             std::size_t count) {
  if (search == nullptr || answer.searched == nullptr) return {};
  return search->placesIn(*answer.searched, document, count);
}

std::optional<TSFoundPlace> TSSearchCopyPlace(const TSSearchRef& search,
                                              const TSNamedPlace& named) {
  return search == nullptr ? std::nullopt : search->place(named);
}

std::vector<TSNamedPlace> TSSearchFindNames(const TSSearchRef& search, std::string_view text,
                                            std::size_t count) {
  return search == nullptr ? std::vector<TSNamedPlace>() : search->namesBeginningWith(text, count);
}

std::optional<TSLocatedWords> TSSearchLocate(const TSSearchRef& search, TSDocumentID document,
                                             const TSTextPart& part, std::uint32_t begin,
                                             std::uint32_t end, std::size_t margin) {
  if (search == nullptr) return std::nullopt;
  return search->locate(document, part, begin, std::max(end, begin + 1), margin);
}

std::vector<TSTextRange> TSSearchFindTerms(const TSSearchRef& search, const TSSearchTerms& terms,
                                           std::string_view text) {
  return search == nullptr ? std::vector<TSTextRange>() : search->placesOf(terms, text);
}

std::size_t TSSearchGetDocumentCount(const TSSearchRef& search) {
  return search == nullptr ? 0 : search->index().documents().size();
}

std::optional<URL> TSSearchCopyDocumentURL(const TSSearchRef& search, TSDocumentID document) {
  if (search == nullptr) return std::nullopt;
  const std::optional<std::string> text = search->index().url(document);
  return text ? URL::parse(*text) : std::nullopt;
}

std::optional<Dictionary> TSSearchCopyDocumentProperties(const TSSearchRef& search,
                                                         TSDocumentID document) {
  return search == nullptr ? std::nullopt : search->index().properties(document);
}

std::string TSSearchCopyTitle(const TSSearchRef& search, TSDocumentID document) {
  return search == nullptr ? std::string() : std::string(search->titles().title(document));
}

std::string TSSearchCopySharedTitle(const TSSearchRef& search) {
  return search == nullptr ? std::string() : search->titles().shared().name();
}

}  // namespace quorvex
