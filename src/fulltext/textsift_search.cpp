#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "common/idle_pool.h"
#include "common/parallel.h"
#include "fulltext/analysis_properties.h"
#include "fulltext/searching/name_finder.h"
#include "fulltext/searching/passages.h"
#include "fulltext/searching/phrases.h"
#include "fulltext/searching/proximity.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/ranking.h"
#include "fulltext/searching/suggestion.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_locator.h"
#include "fulltext/searching/word_terms.h"
#include "fulltext/textsift_index.h"
#include "platform/textsift.h"

namespace quorvex {

using namespace textsearch;

namespace {

/// Number of top documents that are reranked by proximity.
constexpr std::size_t reranked = 50;

/// Names offered while one is being typed.
constexpr std::size_t mostNamedByBeginning = 5;

/// Each look-up walks all terms.
constexpr unsigned mostSuggestions = 3;

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
  RankingScratch ranking;
  WordCodes::WordOfCode wordOfCode;
  Stemmer stemmer{std::string_view()};
  std::string language;
};

/// Caches the terms that words match, up to a number of words.
class WordCache {
 public:
  using Terms = std::shared_ptr<const WordTerms>;

  Terms find(const std::string& key) {
    const std::lock_guard lock(_mutex);
    const auto found = _terms.find(key);
    return found == _terms.end() ? nullptr : found->second;
  }
  void insert(const std::string& key, Terms terms) {
    constexpr std::size_t mostRemembered = 4096;
    const std::lock_guard lock(_mutex);
    if (_terms.size() >= mostRemembered) _terms.clear();
    _terms.emplace(key, std::move(terms));
  }

 private:
  std::mutex _mutex;
  std::unordered_map<std::string, Terms> _terms;
};

/// Returns the text with words replaced. `replacements` is ordered by position.
std::string replaced(std::string_view text,
                     const std::vector<std::pair<QueryWord, std::string>>& replacements) {
  std::string result;
  std::size_t position = 0;
  for (const auto& [word, replacement] : replacements) {
    result.append(text.substr(position, word.begin - position)).append(replacement);
    position = word.end;
  }
  return result.append(text.substr(position));
}

AnalysisSettings settingsOf(const IndexReader& index) {
  return analysisSettings(index.description().analysisProperties).value_or(AnalysisSettings());
}

}  // namespace

class TSSearchedWords {
 public:
  std::vector<RankedWord> words;
  std::vector<WordSequence> phrases;
};

class TSSearch {
 public:
  explicit TSSearch(std::shared_ptr<const IndexReader> index)
      : _index(std::move(index)),
        _filter(settingsOf(*_index)),
        _titles(*_index, titleProperty, _filter,
                *std::make_unique<Tokenizer>(_filter.termCharacters())),
        _finder(*_index, _titles),
        _names(*_index, _titles),
        _ranker(*_index, _titles) {}

  const IndexReader& index() const { return *_index; }
  const TitleIndex& titles() const { return _titles; }

  TSSearchAnswer answer(std::string_view text, const TSSearchOptions& options,
                        std::size_t count) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    const Query query = parseQuery(text, _filter, workspace->tokenizer,
                                   {options.isPlainText, options.lastWordIsPrefix});
    TSSearchAnswer answer;
    answer.state = stateOf(query);
    if (answer.state == TSSearchState::answered) {
      const auto searched = std::make_shared<TSSearchedWords>();
      findWords(query, text, options, *workspace, answer, *searched);
      answer.searched = searched;
      restrictDocuments(query, options, *workspace, answer.allowed);
      findNames(text, options, *workspace, answer);
      rank(*searched, count, *workspace, answer);
    }
    _workspaces.giveBack(std::move(workspace));
    return answer;
  }

  std::vector<TSFoundPlace> placesIn(const TSSearchedWords& searched, std::uint32_t document,
                                     std::size_t count) const {
    const PlacesOfDocument places(*_index, document);
    if (!places.haveFragments()) return {};
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    std::vector<TSFoundPlace> found;
    {
      const WordCodes codes(*_index, searched.words, workspace->wordOfCode);
      PassageFinder passages(_ranker, searched.words, searched.phrases, codes);
      const std::vector<Passage> ranked = passages.find(places, document);
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

  std::vector<TSTextRange> placesOf(const std::vector<std::string>& terms,
                                    std::string_view text) const {
    std::unique_ptr<Workspace> workspace = takeWorkspace();
    std::vector<TSTextRange> places;
    workspace->tokenizer.reset(text);
    for (Token token; workspace->tokenizer.next(token);) {
      if (std::ranges::binary_search(terms, token.term)) places.push_back({token.begin, token.end});
    }
    _workspaces.giveBack(std::move(workspace));
    return places;
  }

 private:
  using Replacements = std::vector<std::pair<QueryWord, std::string>>;

  std::unique_ptr<Workspace> takeWorkspace() const {
    return _workspaces.take(
        [this] { return std::make_unique<Workspace>(_filter.termCharacters()); });
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

  WordCache::Terms termsOf(const QueryClause& clause, const QueryWord& word,
                           const TSSearchOptions& options, Workspace& workspace) const {
    const char* const kind = clause.isPhrase ? "exactly" : clause.isPrefix ? "prefix" : "word";
    const std::string key = kind + ('\n' + options.language) + '\n' + word.term;
    WordCache::Terms terms = _words.find(key);
    if (terms != nullptr) return terms;
    terms = std::make_shared<const WordTerms>(
        clause.isPhrase   ? _finder.exactly(word.term)
        : clause.isPrefix ? _finder.beginningWith(word.term)
                          : _finder.inflectionsOf(word.term, options.language,
                                                  workspace.stemmerFor(options.language)));
    _words.insert(key, terms);
    return terms;
  }

  /// Finds the terms of all wanted words. Repeated words weigh more.
  void findWords(const Query& query, std::string_view text, const TSSearchOptions& options,
                 Workspace& workspace, TSSearchAnswer& answer, TSSearchedWords& searched) const {
    Replacements replacements;
    unsigned lookUpsLeft = mostSuggestions;
    for (const QueryClause& clause : query.clauses) {
      if (clause.isExcluded) continue;
      WordSequence sequence;
      for (const QueryWord& word : clause.words) {
        if (answer.wordCount++ > 0) answer.words += ' ';
        answer.words += text.substr(word.begin, word.end - word.begin);
        sequence.words.push_back(WordSequence::gap);
        if (word.term.empty()) continue;
        WordCache::Terms terms = termsOf(clause, word, options, workspace);
        if (!terms->empty()) {
          sequence.words.back() = addWord(std::move(terms), searched.words);
        } else if (lookUpsLeft > 0) {
          --lookUpsLeft;
          auto nearest = nearestTerm(*_index, _titles, word.term);
          if (nearest) replacements.emplace_back(word, *std::move(nearest));
        }
      }
      if (clause.isPhrase) searched.phrases.push_back(std::move(sequence));
    }
    if (!replacements.empty()) answer.suggestion = replaced(text, replacements);
    for (const RankedWord& word : searched.words)
      answer.terms.insert(answer.terms.end(), word.terms->forms.begin(), word.terms->forms.end());
    std::ranges::sort(answer.terms);
    answer.terms.erase(std::unique(answer.terms.begin(), answer.terms.end()), answer.terms.end());
  }

  /// Returns the number of the word.
  static std::size_t addWord(WordCache::Terms terms, std::vector<RankedWord>& words) {
    const auto same = std::ranges::find_if(
        words, [&](const RankedWord& word) { return word.terms->forms == terms->forms; });
    if (same != words.end()) {
      same->weight += 1;
      return static_cast<std::size_t>(same - words.begin());
    }
    words.push_back({std::move(terms), 1});
    return words.size() - 1;
  }

  void findNames(std::string_view text, const TSSearchOptions& options, Workspace& workspace,
                 TSSearchAnswer& answer) const {
    std::vector<NameMatch> matches = _names.find(text, workspace.tokenizer);
    const auto isDoubtful = [&](const NameMatch& match) {
      const auto& allowed = answer.allowed;
      return match.quality < NameFinder::certain ||
             (!allowed.empty() && allowed[match.at.document] == 0);
    };
    std::erase_if(matches, isDoubtful);
    if (matches.empty() && options.lastWordIsPrefix) {
      matches = _names.beginningWith(text, mostNamedByBeginning);
      std::erase_if(matches, isDoubtful);
    }
    for (const NameMatch& match : matches)
      answer.named.push_back(namedPlace(match));
  }

  static TSNamedPlace namedPlace(const NameMatch& match) {
    return {match.at.document, match.at.place, double{match.quality}, match.name};
  }

  /// Allows only documents with every phrase and without excluded words.
  void restrictDocuments(const Query& query, const TSSearchOptions& options, Workspace& workspace,
                         DocumentMask& allowed) const {
    for (const QueryClause& clause : query.clauses) {
      if (!clause.isPhrase && !clause.isExcluded) continue;
      DocumentMask holding(_index->documents().size());
      if (clause.isPhrase) {
        for (const std::uint32_t document : documentsWithPhrase(*_index, _titles, clause.words))
          holding[document] = 1;
      } else {
        markDocuments(*termsOf(clause, clause.words.front(), options, workspace), holding);
      }
      if (allowed.empty()) allowed.assign(holding.size(), 1);
      const std::uint8_t wanted = clause.isExcluded ? 0 : 1;
      for (std::size_t i = 0; i < holding.size(); ++i)
        allowed[i] = allowed[i] != 0 && holding[i] == wanted ? 1 : 0;
    }
  }

  void markDocuments(const WordTerms& terms, DocumentMask& mask) const {
    for (const TermEntry& term : terms.inTexts) {
      for (PostingCursor posting = _index->postings(term); posting.next();)
        mask[posting.document()] = 1;
    }
    for (const std::uint32_t term : terms.inTitles) {
      for (const TitleIndex::Posting& posting : _titles.postings(term))
        mask[posting.document] = 1;
    }
  }

  void rank(const TSSearchedWords& searched, std::size_t count, Workspace& workspace,
            TSSearchAnswer& answer) const {
    if (count == 0) return;
    const std::vector<RankedWord>& words = searched.words;
    std::vector<ScoredDocument> best =
        _ranker.best(words, answer.allowed, std::max(count, reranked), workspace.ranking);
    const auto end = best.begin() + static_cast<std::ptrdiff_t>(std::min(reranked, best.size()));
    if (words.size() > 1) {
      const WordCodes codes(*_index, words, workspace.wordOfCode);
      ProximityScorer proximity(*_index, _ranker, words, codes);
      PassageFinder passages(_ranker, words, searched.phrases, codes);
      std::for_each(best.begin(), end, [&](ScoredDocument& hit) {
        proximity.addTo(hit);
        // Without places, the only passage would be the whole text, which is ranked already.
        const PlacesOfDocument places(*_index, hit.document);
        if (places.size() == 0) return;
        const std::vector<Passage> found = passages.find(places, hit.document);
        if (found.empty()) return;
        hit.score +=
            _ranker.settings.passageWeight * std::ranges::max(found, {}, &Passage::score).score;
      });
      std::sort(best.begin(), end);
    }
    best.resize(std::min(count, best.size()));
    for (const ScoredDocument& hit : best)
      answer.hits.push_back({hit.document, static_cast<double>(hit.score)});
  }

  std::shared_ptr<const IndexReader> _index;
  WordFilter _filter;
  TitleIndex _titles;
  TermFinder _finder;
  NameFinder _names;
  Ranker _ranker;
  mutable WordCache _words;
  mutable IdlePool<Workspace> _workspaces;
};

TSSearchRef TSSearchCreateWithIndex(const TSIndexRef& index) {
  if (index == nullptr || index->reader == nullptr) return nullptr;
  std::shared_ptr<const IndexReader> reader = index->reader;
  // Runs while the titles are read. On an exception, the future's destructor waits.
  std::future<void> preparation = inBackground([reader] { reader->prepareForSearch(); });
  auto search = std::make_shared<const TSSearch>(std::move(reader));
  preparation.get();
  return search;
}

TSSearchAnswer TSSearchFindDocuments(const TSSearchRef& search, std::string_view query,
                                     const TSSearchOptions& options, std::size_t count) {
  return search == nullptr ? TSSearchAnswer() : search->answer(query, options, count);
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

std::vector<TSTextRange> TSSearchFindTerms(const TSSearchRef& search,
                                           const std::vector<std::string>& terms,
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
