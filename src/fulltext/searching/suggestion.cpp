#include "fulltext/searching/suggestion.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <vector>

#include "common/unicode.h"

namespace quorvex::textsearch {

namespace {

void appendCharacters(std::string_view text, std::u32string& characters) {
  for (std::size_t position = 0; position < text.size();)
    characters += nextCharacter(text, position);
}

/// Compares one word with terms in byte order. The table of distances between the prefixes of word
/// and term has a row for each prefix of the term; the rows for the prefix that a term shares with
/// the previous one are kept.
class NearestTerm {
 public:
  explicit NearestTerm(std::string_view word) {
    appendCharacters(word, _word);
    constexpr std::size_t shortWord = 4;
    _allowed = _word.size() <= shortWord ? 1 : 2;
    for (std::uint32_t column = 0; column <= _word.size(); ++column)
      _cells.push_back(column);
    _smallest.push_back(0);
  }

  void offer(std::string_view term, std::size_t documents) {
    _before.swap(_term);
    _term.clear();
    appendCharacters(term, _term);
    const auto shared =
        static_cast<std::size_t>(std::ranges::mismatch(_before, _term).in1 - _before.begin());
    if (shared >= _deadEnd) return;
    _deadEnd = SIZE_MAX;
    _filled = std::min(_filled, shared);
    if (_term.size() > _word.size() + _allowed) return;
    while (_filled < _term.size()) {
      fillRow(++_filled);
      if (isDeadEnd(_filled)) {
        _deadEnd = _filled;
        return;
      }
    }
    consider(term, cell(_term.size(), _word.size()), documents);
  }

  std::optional<std::string> best() const { return _best; }

 private:
  std::uint32_t& cell(std::size_t row, std::size_t column) {
    return _cells[row * (_word.size() + 1) + column];
  }

  /// Optimal string alignment distance.
  void fillRow(std::size_t row) {
    _cells.resize(std::max(_cells.size(), (row + 1) * (_word.size() + 1)));
    _smallest.resize(row + 1);
    _smallest[row] = cell(row, 0) = static_cast<std::uint32_t>(row);
    for (std::size_t column = 1; column <= _word.size(); ++column) {
      const std::uint32_t replaced = _term[row - 1] == _word[column - 1] ? 0 : 1;
      std::uint32_t distance = std::min({cell(row - 1, column) + 1, cell(row, column - 1) + 1,
                                         cell(row - 1, column - 1) + replaced});
      if (row > 1 && column > 1 && _term[row - 1] == _word[column - 2] &&
          _term[row - 2] == _word[column - 1]) {
        distance = std::min(distance, cell(row - 2, column - 2) + 1);
      }
      cell(row, column) = distance;
      _smallest[row] = std::min(_smallest[row], distance);
    }
  }

  /// A row depends on the two before it, so after two rows that are too far off, all rows are.
  bool isDeadEnd(std::size_t row) const {
    return _smallest[row] > _allowed && _smallest[row - 1] > _allowed;
  }

  void consider(std::string_view term, std::uint32_t distance, std::size_t documents) {
    if (distance > _allowed || distance == 0) return;
    const std::size_t otherStart = _term.front() == _word.front() ? 0 : 1;
    const std::tuple rank(distance, otherStart, SIZE_MAX - documents);
    if (_best && rank >= _rank) return;
    _rank = rank;
    _best = term;
  }

  std::u32string _word;
  std::uint32_t _allowed = 1;
  std::vector<std::uint32_t> _cells;
  std::vector<std::uint32_t> _smallest;  ///< of each row
  std::u32string _term;
  std::u32string _before;
  std::size_t _filled = 0;          ///< the last row valid for the term
  std::size_t _deadEnd = SIZE_MAX;  ///< terms that share this many characters are too far off
  std::optional<std::string> _best;
  std::tuple<std::uint32_t, std::size_t, std::size_t> _rank;
};

}  // namespace

std::optional<std::string> nearestTerm(const IndexReader& index, const TitleIndex& titles,
                                       std::string_view word) {
  // Two letters are one edit from nearly everything, and a text as long as a line is not a word.
  constexpr std::size_t fewestCharacters = 3;
  constexpr std::size_t mostCharacters = 64;
  const std::size_t characters = characterCount(word);
  if (characters < fewestCharacters || characters > mostCharacters) return std::nullopt;
  NearestTerm nearest(word);
  for (TermDictionary::Cursor cursor(index.terms(), 0); cursor.next();) {
    nearest.offer(cursor.term(), cursor.entry().documentCount);
  }
  for (std::uint32_t term = 0; term < titles.terms().size(); ++term) {
    nearest.offer(titles.terms()[term], titles.postings(term).size());
  }
  return nearest.best();
}

}  // namespace quorvex::textsearch
