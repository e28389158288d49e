#include "fulltext/searching/suggestion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>

#include "common/unicode.h"
#include "fulltext/searching/name_text.h"
#include "text/identifiers.h"

namespace quorvex::textsearch {

namespace {

// Two letters are one edit from nearly everything, and a text as long as a line is not a word.
constexpr std::size_t fewestCharacters = 3;
constexpr std::size_t mostCharacters = 64;

/// Candidates whose names are looked up.
constexpr std::size_t mostCandidates = 32;

// Costs of edits.
constexpr float edit = 1;
constexpr float swapEdit = 0.8F;
constexpr float doubledLetterEdit = 0.8F;  ///< a letter for two of it, or two for one
constexpr float nearbyKeyEdit = 0.9F;
constexpr float joinerEdit = 0.5F;  ///< readers forget the characters between the parts of names
constexpr float digitEdit = 1.5F;   ///< another digit mostly means another thing
// What makes a term less likely.
constexpr float otherStart = 0.4F;
constexpr float notProminent = 0.6F;
constexpr float blankLeftOut = 1;
/// For each time that a term is in twice as many documents.
constexpr float frequencyGain = 0.04F;

bool isJoiner(char32_t character) {
  return character == '_' || character == '-' || character == '.' || character == ':';
}

bool isDigit(char32_t character) {
  return character >= '0' && character <= '9';
}

/// On a keyboard with Latin letters.
bool areNearbyKeys(char32_t a, char32_t b) {
  static constexpr std::array<std::string_view, 3> rows = {"qwertyuiop", "asdfghjkl", "zxcvbnm"};
  const auto placeOf = [](char32_t character) {
    for (int row = 0; row < 3; ++row) {
      const std::size_t column =
          character < 0x80 ? rows[static_cast<std::size_t>(row)].find(static_cast<char>(character))
                           : std::string_view::npos;
      if (column != std::string_view::npos) return std::pair(row, static_cast<int>(column));
    }
    return std::pair(-9, -9);
  };
  const auto [rowA, columnA] = placeOf(a);
  const auto [rowB, columnB] = placeOf(b);
  if (rowA < 0 || rowB < 0) return false;
  return rowA == rowB ? std::abs(columnA - columnB) == 1
                      : std::abs(rowA - rowB) == 1 &&
                            (columnA == columnB || columnA - columnB == rowB - rowA);
}

float replacingCost(char32_t a, char32_t b) {
  if (a == b) return 0;
  if (isJoiner(a) && isJoiner(b)) return joinerEdit;
  if (isDigit(a) && isDigit(b)) return digitEdit;
  return areNearbyKeys(a, b) ? nearbyKeyEdit : edit;
}

/// Cost of a character that only one of two words has. `before`: the one before it, or 0.
float insertingCost(char32_t character, char32_t before) {
  if (isJoiner(character)) return joinerEdit;
  return character == before ? doubledLetterEdit : edit;
}

bool isAscii(std::string_view text) {
  constexpr std::uint64_t highBits = 0x8080808080808080U;
  std::uint64_t bytes = 0;
  std::size_t position = 0;
  for (; position + sizeof(bytes) <= text.size(); position += sizeof(bytes)) {
    std::memcpy(&bytes, text.data() + position, sizeof(bytes));
    if ((bytes & highBits) != 0) return false;
  }
  bytes = 0;
  std::memcpy(&bytes, text.data() + position, text.size() - position);
  return (bytes & highBits) == 0;
}

std::u32string charactersOf(std::string_view text) {
  std::u32string characters;
  for (std::size_t position = 0; position < text.size();)
    characters += nextCharacter(text, position);
  return characters;
}

/// Tells quickly which terms are within so many edits of a word: optimal string alignment by bit
/// vectors, after a look at their letters. Takes characters with the same last bits
/// for the same, so a term that passes may have more edits.
class EditScreen {
 public:
  /// `word`: at most 64 characters.
  EditScreen(std::u32string_view word, std::size_t allowed)
      : _size(word.size()), _allowed(allowed) {
    for (std::size_t i = 0; i < _size; ++i) {
      _places[word[i] % _places.size()] |= std::uint64_t{1} << i;
      _letters |= letterBit(word[i]);
    }
  }

  bool letsPass(std::string_view term) const {
    constexpr std::size_t mostBytesOfCharacter = 4;
    if (term.size() + _allowed < _size || term.size() > (_size + _allowed) * mostBytesOfCharacter) {
      return false;
    }
    if (!isAscii(term)) {
      std::array<char32_t, maximumTermSize> characters;
      std::size_t size = 0;
      for (std::size_t position = 0; position < term.size() && size < characters.size();)
        characters[size++] = nextCharacter(term, position);
      return isNear(std::u32string_view(characters.data(), size));
    }
    if (term.size() > _size + _allowed) return false;
    std::uint64_t letters = 0;
    for (const char letter : term)
      letters |= letterBit(static_cast<unsigned char>(letter));
    // An edit adds at most one letter and removes at most one.
    return bitCount(letters & ~_letters) <= _allowed && bitCount(_letters & ~letters) <= _allowed &&
           isNear(term);
  }

 private:
  static std::uint64_t letterBit(char32_t character) {
    return std::uint64_t{1} << (character % 64);
  }
  static std::size_t bitCount(std::uint64_t bits) {
    return static_cast<std::size_t>(std::popcount(bits));
  }

  template <typename Text>
  bool isNear(Text term) const {
    if (term.size() + _allowed < _size || term.size() > _size + _allowed) return false;
    const std::uint64_t lastBit = std::uint64_t{1} << (_size - 1);
    std::uint64_t more = ~std::uint64_t{0};  // places where the cost rises along the word
    std::uint64_t less = 0;                  // and where it falls
    std::uint64_t diagonal = 0;
    std::uint64_t before = 0;
    std::size_t distance = _size;
    std::size_t left = term.size();
    for (const auto character : term) {
      const std::uint64_t same = _places[static_cast<std::size_t>(character) % _places.size()];
      const std::uint64_t swapped = ((~diagonal & same) << 1U) & before;
      diagonal = (((same & more) + more) ^ more) | same | less | swapped;
      std::uint64_t rises = less | ~(diagonal | more);
      std::uint64_t falls = diagonal & more;
      if ((rises & lastBit) != 0) ++distance;
      if ((falls & lastBit) != 0) --distance;
      if (distance > _allowed + --left) return false;
      rises = rises << 1U | 1U;
      falls <<= 1U;
      more = falls | ~(diagonal | rises);
      less = rises & diagonal;
      before = same;
    }
    return distance <= _allowed;
  }

  std::size_t _size;
  std::size_t _allowed;
  std::uint64_t _letters = 0;
  std::array<std::uint64_t, 256> _places = {};  ///< of each character in the word
};

std::size_t allowedEdits(std::size_t characters) {
  constexpr std::size_t shortWord = 4;
  constexpr std::size_t longWord = 12;
  return characters <= shortWord ? 1 : characters < longWord ? 2 : 3;
}

/// Weighs the edits between one word and others: optimal string alignment.
class EditCosts {
 public:
  EditCosts(std::string_view word, std::size_t allowed)
      : _text(word), _word(charactersOf(word)), _allowed(allowed), _screen(_word, allowed) {
    for (std::vector<float>& row : _rows)
      row.resize(_word.size() + 1);
  }

  /// Null if the term is too far off or the word itself.
  std::optional<float> to(std::string_view term) {
    if (!_screen.letsPass(term) || term == _text) return std::nullopt;
    _term = charactersOf(term);
    const float cost = distance();
    if (cost > static_cast<float>(_allowed)) return std::nullopt;
    return _term.front() == _word.front() ? cost : cost + otherStart;
  }

 private:
  float distance() {
    // The last three rows of the table of costs between the prefixes of word and term.
    std::vector<float>* before = &_rows[0];
    std::vector<float>* last = &_rows[1];
    std::vector<float>* row = &_rows[2];
    (*last)[0] = 0;
    for (std::size_t column = 1; column <= _word.size(); ++column)
      (*last)[column] = (*last)[column - 1] + missingFromTerm(column);
    for (std::size_t i = 1; i <= _term.size(); ++i) {
      const char32_t character = _term[i - 1];
      const float inserted = insertingCost(character, i > 1 ? _term[i - 2] : 0);
      (*row)[0] = (*last)[0] + inserted;
      for (std::size_t column = 1; column <= _word.size(); ++column) {
        const char32_t other = _word[column - 1];
        float cost =
            std::min({(*last)[column] + inserted, (*row)[column - 1] + missingFromTerm(column),
                      (*last)[column - 1] + replacingCost(character, other)});
        if (i > 1 && column > 1 && character == _word[column - 2] && _term[i - 2] == other)
          cost = std::min(cost, (*before)[column - 2] + swapEdit);
        (*row)[column] = cost;
      }
      std::tie(before, last, row) = std::tuple(last, row, before);
    }
    return last->back();
  }

  float missingFromTerm(std::size_t column) const {
    return insertingCost(_word[column - 1], column > 1 ? _word[column - 2] : 0);
  }

  std::string_view _text;
  std::u32string _word;
  std::size_t _allowed;
  EditScreen _screen;
  std::u32string _term;
  std::array<std::vector<float>, 3> _rows;
};

/// Finds the candidates for one word.
class Speller {
 public:
  Speller(const IndexReader& index, const TitleIndex& titles) : _index(index), _titles(titles) {}

  std::vector<SpellingCandidate> similarTo(std::string_view word, std::size_t count) {
    if (!isWord(word)) return {};
    std::vector<SpellingCandidate> similar = termsNear(word, allowedEdits(characterCount(word)));
    if (similar.empty()) {
      if (std::optional<SpellingCandidate> name = respelled(word)) similar.push_back(*name);
    }
    similar.resize(std::min(similar.size(), count));
    return similar;
  }

 private:
  /// A term of texts or titles, its cost that of its rarity.
  std::optional<SpellingCandidate> find(std::string_view term) const {
    const std::optional<TermEntry> entry = _index.terms().find(term);
    const std::size_t inTitles = titlesWith(term);
    const std::size_t inTexts = entry ? entry->documentCount : 0;
    if (inTexts + inTitles == 0) return std::nullopt;
    return candidate(term, 0, std::max(inTexts, inTitles), inTitles > 0);
  }

  /// Numbers are not misspelt: each is another one.
  static bool isWord(std::string_view text) {
    const std::size_t characters = characterCount(text);
    return characters >= fewestCharacters && characters <= mostCharacters &&
           std::ranges::any_of(text, isLetter);
  }

  std::vector<SpellingCandidate> termsNear(std::string_view word, std::size_t allowed) {
    _candidates.clear();
    offerSimilar(word, allowed);
    offerSplits(word);
    keepBest(mostCandidates);
    for (SpellingCandidate& candidate : _candidates) {
      if (candidate.isProminent || !isName(candidate.term)) continue;
      candidate.isProminent = true;
      candidate.cost -= notProminent;
    }
    keepBest(mostCandidates);
    return std::move(_candidates);
  }

  /// A joined name with its unknown parts replaced: the parts of a qualified name, or those between
  /// underscores.
  std::optional<SpellingCandidate> respelled(std::string_view name) {
    constexpr unsigned mostUnknown = 2;
    const bool isQualified = !std::ranges::all_of(name, isIdentifierByte);
    const auto joins = [&](char byte) {
      return isQualified ? !isIdentifierByte(byte) : byte == '_';
    };
    SpellingCandidate result;
    unsigned unknown = 0;
    for (std::size_t begin = 0; begin < name.size();) {
      const auto rest = name.substr(begin);
      if (joins(rest.front())) {
        result.term += rest.front();
        ++begin;
        continue;
      }
      const auto size = static_cast<std::size_t>(std::ranges::find_if(rest, joins) - rest.begin());
      const std::string_view part = rest.substr(0, size);
      if (part == name) return std::nullopt;
      begin += size;
      if (!isWord(part) || find(part) || isName(part)) {
        result.term += part;
        continue;
      }
      if (++unknown > mostUnknown) return std::nullopt;
      const std::vector<SpellingCandidate> similar = similarTo(part, 1);
      if (similar.empty()) return std::nullopt;
      result.term += similar.front().term;
      result.cost += similar.front().cost;
    }
    if (unknown == 0) return std::nullopt;
    if (const auto known = find(result.term)) result.documents = known->documents;
    return result;
  }

  SpellingCandidate candidate(std::string_view term, float cost, std::size_t documents,
                              bool isProminent) const {
    const float share =
        static_cast<float>(documents + 1) / static_cast<float>(_index.documents().size() + 1);
    return {std::string(term),
            cost + (isProminent ? 0 : notProminent) - frequencyGain * std::log2(share), documents,
            isProminent};
  }

  void offer(SpellingCandidate candidate) {
    if (_candidates.size() >= 2 * mostCandidates) keepBest(mostCandidates);
    _candidates.push_back(std::move(candidate));
  }

  void keepBest(std::size_t count) {
    std::ranges::sort(_candidates, [](const SpellingCandidate& a, const SpellingCandidate& b) {
      return a.cost != b.cost ? a.cost < b.cost : a.term < b.term;
    });
    _candidates.resize(std::min(_candidates.size(), count));
  }

  void offerSimilar(std::string_view word, std::size_t allowed) {
    EditCosts costs(word, allowed);
    for (TermDictionary::Cursor title(_titles.terms(), 0); title.next();) {
      const std::optional<float> cost = costs.to(title.term());
      if (!cost) continue;
      SpellingCandidate found = *find(title.term());
      found.cost += *cost;
      offer(std::move(found));
    }
    for (TermDictionary::Cursor cursor(_index.terms(), 0); cursor.next();) {
      const std::optional<float> cost = costs.to(cursor.term());
      if (cost && titlesWith(cursor.term()) == 0)
        offer(candidate(cursor.term(), *cost, cursor.entry().documentCount, false));
    }
  }

  /// Two words without the blank between them.
  void offerSplits(std::string_view word) {
    for (std::size_t at = 0; at < word.size();) {
      nextCharacter(word, at);
      const std::string_view first = word.substr(0, at);
      const std::string_view second = word.substr(at);
      if (characterCount(first) < fewestCharacters) continue;
      if (characterCount(second) < fewestCharacters) break;
      const auto a = find(first);
      if (!a) continue;
      const auto b = find(second);
      if (!b) continue;
      offer({a->term + ' ' + b->term, std::max(a->cost, b->cost) + blankLeftOut,
             std::min(a->documents, b->documents), a->isProminent && b->isProminent});
    }
  }

  std::size_t titlesWith(std::string_view term) const {
    const std::optional<std::uint32_t> title = _titles.find(term);
    return title ? _titles.titleCount(*title) : 0;
  }

  bool isName(std::string_view term) const {
    constexpr unsigned mostNamesSeen = 32;
    const std::string_view last = term.substr(qualifierSize(term));
    NameTable::Cursor cursor(_index.names());
    bool isThere = cursor.seek(last);
    for (unsigned seen = 0; isThere && cursor.folded() == last && seen < mostNamesSeen; ++seen) {
      if (endsWithParts(caseFolded(cursor.entry().name), term)) return true;
      isThere = cursor.next();
    }
    return false;
  }

  const IndexReader& _index;
  const TitleIndex& _titles;
  std::vector<SpellingCandidate> _candidates;
};

}  // namespace

std::vector<SpellingCandidate> similarTerms(const IndexReader& index, const TitleIndex& titles,
                                            std::string_view word, std::size_t count) {
  return Speller(index, titles).similarTo(word, count);
}

}  // namespace quorvex::textsearch
