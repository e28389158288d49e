#include "fulltext/searching/query.h"

#include <algorithm>
#include <array>

#include "common/unicode.h"
#include "text/identifiers.h"
#include "text/operators.h"

namespace quorvex::textsearch {

namespace {

constexpr std::array<std::string_view, 5> quotationMarks = {"\"", "\u201C", "\u201D", "\u201E",
                                                            "\u201F"};

/// Returns the size of the quotation mark at `position`; 0 when there is none.
std::size_t quotationMarkAt(std::string_view text, std::size_t position) {
  for (const std::string_view mark : quotationMarks) {
    if (text.substr(position).starts_with(mark)) return mark.size();
  }
  return 0;
}

std::size_t nextQuotationMark(std::string_view text, std::size_t position) {
  while (position < text.size() && quotationMarkAt(text, position) == 0)
    ++position;
  return position;
}

bool isSpaceAt(std::string_view text, std::size_t position) {
  return isWhitespaceOrNewline(nextCharacter(text, position));
}

/// Returns the end of the run without white space and quotation marks at `position`.
std::size_t endOfRun(std::string_view text, std::size_t position) {
  while (position < text.size() && quotationMarkAt(text, position) == 0 &&
         !isSpaceAt(text, position)) {
    nextCharacter(text, position);
  }
  return position;
}

class Parser {
 public:
  Parser(std::string_view text, const WordFilter& filter, Tokenizer& tokenizer,
         const QueryReading& reading)
      : _text(text), _filter(filter), _tokenizer(tokenizer), _reading(reading) {}

  Query parse() {
    if (_reading.isPlainText) {
      std::vector<QueryWord> words = wordsBetween(0, _text.size());
      addWords(words, false);
    } else {
      std::size_t position = 0;
      while (position < _text.size() && _left > 0)
        position = takeRun(position);
    }
    if (_reading.lastIsPrefix) takeLastAsBeginning();
    return std::move(_query);
  }

 private:
  std::size_t takeRun(std::size_t position) {
    if (isSpaceAt(_text, position)) {
      nextCharacter(_text, position);
      return position;
    }
    std::size_t begin = position;
    const bool excluded = isExclusion(begin);
    if (excluded) ++begin;
    if (const std::size_t mark = quotationMarkAt(_text, begin)) {
      const std::size_t end = nextQuotationMark(_text, begin + mark);
      std::vector<QueryWord> words = wordsBetween(begin + mark, end);
      if (_reading.phrasesAreWords && !excluded) {
        addWords(words, false);
      } else {
        addPhrase(std::move(words), excluded);
      }
      return end + quotationMarkAt(_text, end);
    }
    const std::size_t end = std::max(endOfRun(_text, begin), position + 1);
    std::vector<QueryWord> words = wordsBetween(begin, end);
    if (!excluded) addOperators(words, begin, end);
    // A run of several words, such as "copy-on-write", is excluded as a whole.
    if (excluded && words.size() > 1) {
      addPhrase(std::move(words), true);
    } else {
      addWords(words, excluded);
    }
    return end;
  }

  /// A hyphen excludes a word of two letters or more, or a phrase, and begins the name of an option
  /// otherwise.
  bool isExclusion(std::size_t position) const {
    if (_text[position] != '-') return false;
    const std::size_t begin = position + 1;
    if (quotationMarkAt(_text, begin) > 0) return true;
    const std::string_view run = _text.substr(begin, endOfRun(_text, begin) - begin);
    std::size_t end = 0;
    const bool isWord = !run.empty() && isLetterOrDigit(nextCharacter(run, end)) &&
                        !isDigit(run.front()) && end < run.size() && !isDigit(run[end]) &&
                        run.find('=') == run.npos;
    return isWord && !(_reading.isName && _reading.isName(_text.substr(position, run.size() + 1)));
  }

  std::vector<QueryWord> wordsBetween(std::size_t begin, std::size_t end) {
    std::vector<QueryWord> words;
    _tokenizer.reset(_text.substr(begin, end - begin));
    for (Token token; _left > 0 && _tokenizer.next(token); --_left) {
      const bool leftOut = _filter.leavesOut(token.term);
      _query.hasLeftOutWords |= leftOut;
      if (leftOut) {
        _lastLeftOut = {std::string(token.term), begin + token.begin, begin + token.end};
      }
      words.push_back({leftOut ? std::string() : std::string(token.term), begin + token.begin,
                       begin + token.end});
    }
    return words;
  }

  /// Adds the operators around and between words, as texts are read.
  void addOperators(const std::vector<QueryWord>& words, std::size_t begin, std::size_t end) {
    const auto addBefore = [&](std::size_t limit) {
      while (_left > 0) {
        const std::string_view found = nextOperator(_text, begin, limit);
        if (found.empty()) return;
        const auto at = static_cast<std::size_t>(found.data() - _text.data());
        _query.operators.push_back({std::string(found), at, at + found.size()});
        --_left;
      }
    };
    for (const QueryWord& word : words) {
      addBefore(word.begin);
      begin = word.end;
    }
    addBefore(end);
  }

  void addWords(std::vector<QueryWord>& words, bool excluded) {
    for (QueryWord& word : words) {
      if (word.term.empty()) continue;
      QueryClause clause;
      clause.isExcluded = excluded;
      clause.words.push_back(std::move(word));
      _query.clauses.push_back(std::move(clause));
    }
  }

  void takeLastAsBeginning() {
    _query.isBeingTyped = true;
    std::vector<QueryClause>& clauses = _query.clauses;
    const auto isLast = [&](const QueryClause& clause) {
      return clause.words.back().end == _text.size();
    };
    if (clauses.size() > 1 && clauses.back().isExcluded && isLast(clauses.back())) {
      clauses.pop_back();
    } else if (!clauses.empty() && !clauses.back().isExcluded) {
      clauses.back().isPrefix = isLast(clauses.back());
    }
    if (clauses.empty() && !_lastLeftOut.term.empty()) {
      clauses.push_back({.words = {_lastLeftOut}, .isPrefix = true});
    }
  }

  /// Adjacent words that the index leaves out become one gap; those at the ends are dropped.
  void addPhrase(std::vector<QueryWord> words, bool excluded) {
    const auto isGap = [](const QueryWord& word) { return word.term.empty(); };
    const auto areGaps = [&](const QueryWord& a, const QueryWord& b) {
      return isGap(a) && isGap(b);
    };
    words.erase(std::unique(words.begin(), words.end(), areGaps), words.end());
    if (!words.empty() && isGap(words.back())) words.pop_back();
    if (!words.empty() && isGap(words.front())) words.erase(words.begin());
    if (words.empty()) return;
    _query.clauses.push_back({std::move(words), true, excluded, false});
  }

  std::string_view _text;
  const WordFilter& _filter;
  Tokenizer& _tokenizer;
  const QueryReading& _reading;
  std::size_t _left = maximumQueryWords;
  QueryWord _lastLeftOut;
  Query _query;
};

/// Returns the part of the text that is parsed, cut between characters.
std::string_view cutToSize(std::string_view text) {
  if (text.size() <= maximumQuerySize) return text;
  return text.substr(0, characterStart(text, maximumQuerySize, maximumQuerySize - 4));
}

}  // namespace

bool Query::hasPhrases() const {
  return std::ranges::any_of(
      clauses, [](const QueryClause& clause) { return clause.isPhrase && !clause.isExcluded; });
}

bool Query::quotesSingleWords() const {
  constexpr std::ptrdiff_t several = 2;
  const auto isSingle = [](const QueryClause& clause) {
    return clause.isExcluded || clause.words.size() == 1;
  };
  const auto others = std::ranges::count_if(
      clauses, [](const QueryClause& clause) { return !clause.isPhrase && !clause.isExcluded; });
  return std::ranges::all_of(clauses, isSingle) && others >= several;
}

std::string withoutQuotationMarks(std::string_view text) {
  std::string kept;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t mark = quotationMarkAt(text, position);
    if (mark == 0) kept += text[position];
    position += std::max<std::size_t>(mark, 1);
  }
  return kept;
}

Query parseQuery(std::string_view text, const WordFilter& filter, Tokenizer& tokenizer,
                 const QueryReading& reading) {
  text = cutToSize(text);
  return Parser(text, filter, tokenizer, reading).parse();
}

}  // namespace quorvex::textsearch
