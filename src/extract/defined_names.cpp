#include "extract/defined_names.h"

#include <algorithm>
#include <array>
#include <optional>

#include "common/unicode.h"
#include "extract/page_limits.h"
#include "text/identifiers.h"

namespace quorvex {

namespace {

// A name has at most so many words: a longer text is a sentence.
constexpr std::size_t mostNameWords = 6;
constexpr std::size_t mostTermWords = 4;
/// Tokens of a text that are looked at; a name stands at its beginning.
constexpr std::size_t mostTokens = 24;

/// Characters inside of names.
bool isNameCharacter(char c) {
  return isLetterOrDigitByte(c) ||
         std::string_view("_.:$@-/#+!?*%").find(c) != std::string_view::npos;
}

char lowered(char c) {
  return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

using Token = std::string_view;

/// The letters and digits of a fragment, in lower case, without what only makes it unique: a number
/// at its end, a parameter list.
class FragmentLetters {
 public:
  explicit FragmentLetters(std::string_view fragment) {
    bool inWord = false;
    for (const char c : essenceOf(fragment)) {
      if (isLetterOrDigitByte(c) && _size < _letters.size()) {
        _letters[_size] = lowered(c);
        _beginsWord[_size++] = !inWord;
      }
      inWord = isLetterOrDigitByte(c);
    }
  }

  std::string_view letters() const { return {_letters.data(), _size}; }

  /// Whether it ends with these, from the beginning of a word on.
  bool endsWith(std::string_view letters) const {
    return !letters.empty() && this->letters().ends_with(letters) &&
           _beginsWord[_size - letters.size()];
  }
  /// Whether it begins with these, up to the end of a word.
  bool beginsWith(std::string_view letters) const {
    return letters.size() < _size && this->letters().starts_with(letters) &&
           _beginsWord[letters.size()];
  }

 private:
  static std::string_view essenceOf(std::string_view fragment) {
    const std::string_view essence = fragment.substr(0, fragment.find('(', 1));
    std::size_t size = essence.size();
    while (size > 0 && isDigit(essence[size - 1]))
      --size;
    const bool isCounted = size > 1 && size < essence.size() && essence[size - 1] == '-';
    return isCounted ? essence.substr(0, size - 1) : essence;
  }

  std::array<char, largestName> _letters;
  std::array<bool, largestName> _beginsWord;
  std::size_t _size = 0;
};

/// A text's tokens, which consist of name characters without the punctuation behind them.
class Tokens {
 public:
  explicit Tokens(std::string_view text) {
    for (std::size_t begin = 0; begin < text.size() && _size < mostTokens;) {
      while (begin < text.size() && !isNameCharacterAt(text, begin))
        ++begin;
      std::size_t end = begin;
      while (end < text.size() && isNameCharacterAt(text, end))
        ++end;
      add(text.substr(begin, end - begin));
      begin = end;
    }
  }

  /// The run of tokens that is the whole fragment; else the first token that ends with it
  /// ("SQLITE_LOCKED" for "locked"); else the longest run that the fragment ends with.
  std::string_view partOf(const FragmentLetters& fragment) const {
    const std::string_view wanted = fragment.letters();
    std::string_view best;
    std::size_t bestSize = 0;
    for (std::size_t last = 0; last < _size; ++last) {
      const std::size_t first = last + 1 - std::min(last + 1, mostNameWords);
      for (std::size_t begin = first; begin <= last; ++begin) {
        const std::string_view letters = lettersOf(begin, last);
        if (letters.size() <= bestSize) break;
        if (!fragment.endsWith(letters)) continue;
        best = between(begin, last);
        bestSize = letters.size();
        break;
      }
    }
    constexpr std::size_t fewestLetters = 3;
    if (bestSize == wanted.size() || wanted.size() < fewestLetters) return best;
    for (std::size_t i = 0; i < _size; ++i) {
      const Token token = _tokens[i];
      if (lettersOf(i, i).ends_with(wanted) && FragmentLetters(token).endsWith(wanted))
        return token;
    }
    // "GMenu-struct" leads to GMenu.
    const bool isBeginning = best.empty() && _size > 0 && looksLikeCode(_tokens[0]) &&
                             fragment.beginsWith(lettersOf(0, 0));
    return isBeginning ? _tokens[0] : best;
  }

 private:
  /// Marks such as quotation marks and dashes beyond ASCII end a token, too.
  static bool isNameCharacterAt(std::string_view text, std::size_t position) {
    const auto byte = [&](std::size_t at) {
      return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const std::size_t start = characterStart(text, position);
    const unsigned second = byte(start + 1);
    const bool isMark = (byte(start) == 0xC2 && second < 0xC0) ||
                        (byte(start) == 0xE2 && (second == 0x80 || second == 0x81));
    return !isMark && isNameCharacter(text[position]);
  }

  void add(Token token) {
    while (!token.empty() && std::string_view(".:/!?*").find(token.back()) != token.npos)
      token.remove_suffix(1);
    while (token.starts_with('*'))
      token.remove_prefix(1);
    const std::size_t before = _letters.size();
    for (const char c : token) {
      if (isLetterOrDigitByte(c)) _letters += lowered(c);
    }
    if (_letters.size() == before) return;
    _begins[_size] = before;
    _tokens[_size++] = token;
  }

  std::string_view lettersOf(std::size_t first, std::size_t last) const {
    const std::size_t end = last + 1 < _size ? _begins[last + 1] : _letters.size();
    return std::string_view(_letters).substr(_begins[first], end - _begins[first]);
  }

  std::string_view between(std::size_t first, std::size_t last) const {
    const Token& end = _tokens[last];
    const char* begin = _tokens[first].data();
    return {begin, static_cast<std::size_t>(end.data() + end.size() - begin)};
  }

  std::array<Token, mostTokens> _tokens;
  std::array<std::size_t, mostTokens> _begins;  ///< of their letters
  std::size_t _size = 0;
  std::string _letters;  ///< of all tokens, in lower case
};

std::size_t wordCount(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count(text, ' ')) + 1;
}

void add(std::vector<TSName>& names, std::string_view text, TSNameKind kind) {
  const bool isSound =
      !text.empty() && text.size() <= largestName && std::ranges::any_of(text, isLetterOrDigitByte);
  const auto isSame = [text](const TSName& name) { return name.text == text; };
  if (isSound && std::ranges::none_of(names, isSame)) names.push_back({std::string(text), kind});
}

/// Removes what generators put before a heading: "4.1. ", "Chapter 4. ".
std::string_view withoutNumber(std::string_view text) {
  std::size_t end = text.find(' ');
  if (end == text.npos) return text;
  const auto isNumber = [](std::string_view word) {
    return std::ranges::all_of(word, [](char c) { return isDigit(c) || c == '.'; });
  };
  if (isNumber(text.substr(0, end))) return trimWhitespace(text.substr(end));
  const std::size_t second = text.find(' ', end + 1);
  if (second == text.npos) return text;
  const std::string_view number = text.substr(end + 1, second - end - 1);
  return number.ends_with('.') && isNumber(number) ? trimWhitespace(text.substr(second)) : text;
}

TSNameKind kindOf(std::string_view name) {
  if (name.empty()) return TSNameKind::heading;
  // "SYNOPSIS" is a word, "EOF_CHAR" is none.
  const bool isWord = name.find(' ') != name.npos || std::ranges::all_of(name, isUpper) ||
                      !(looksLikeCode(name) || isLower(name.front()));
  return isWord ? TSNameKind::heading : TSNameKind::definition;
}

/// "-m <msg>, --message=<msg>" defines "-m" and "--message".
void addOptions(std::string_view text, std::vector<TSName>& names) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const bool begins = text[i] == '-' && (i == 0 || !isNameCharacter(text[i - 1]));
    if (!begins) continue;
    std::size_t end = i + 1;
    while (end < text.size() && (isLetterOrDigitByte(text[end]) || text[end] == '-' ||
                                 (text[end] == '_' || text[end] == '.')))
      ++end;
    add(names, text.substr(i, end - i), TSNameKind::term);
    i = end;
  }
}

/// Each part between commas, up to its parameters.
void addParts(std::string_view text, std::vector<TSName>& names) {
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string_view part = text.substr(0, comma);
    const std::size_t end = part.find_first_of("([{<=");
    const bool hasParameters = end != part.npos;
    part = trimWhitespace(part.substr(0, end));
    const auto isMark = [](char c) {
      return std::string_view("'\":*`").find(c) != std::string_view::npos;
    };
    while (!part.empty() && isMark(part.back()))
      part.remove_suffix(1);
    while (!part.empty() && isMark(part.front()))
      part.remove_prefix(1);
    if (wordCount(part) <= mostTermWords) {
      const bool isName = kindOf(part) == TSNameKind::definition;
      add(names, part, isName ? TSNameKind::term : TSNameKind::heading);
    }
    // Other commas separate parameters.
    if (hasParameters) return;
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
}

/// Joins a text and the fragments that lead to it.
struct Relation {
  Relation(std::string_view text, std::span<const std::string_view> fragments) {
    std::optional<Tokens> tokens;
    for (const std::string_view candidate : fragments) {
      // A name may end with a number, too; but then it is all of the text.
      if (isNumbered(candidate) && !std::ranges::equal(candidate, text, {}, lowered, lowered)) {
        continue;
      }
      if (!tokens) tokens.emplace(text);
      const std::string_view found = tokens->partOf(FragmentLetters(candidate));
      if (fragment.empty() || (part.empty() && !found.empty())) fragment = candidate;
      if (found.size() > part.size()) part = found;
    }
    if (fragment.empty() && !fragments.empty()) fragment = fragments.front();
  }

  std::string_view fragment;
  std::string_view part;  ///< of the text
};

/// Whether a part of a heading is a name and not just the last word that agrees: it is all of the
/// text, looks like one, or stands behind what qualifies it in the fragment ("method.push",
/// "GObject-notify", but not "pair_phone").
bool isNameIn(std::string_view heading, const Relation& relation) {
  const std::string_view whole = trimWhitespace(heading.substr(0, heading.find('(', 1)));
  if (relation.part.size() >= whole.size() || looksLikeCode(relation.part)) return true;
  const std::string_view fragment = relation.fragment.substr(0, relation.fragment.find('(', 1));
  const std::size_t end = fragment.find_last_of(".:#/-_");
  if (end == fragment.npos) return false;
  return std::string_view(".:#/").find(fragment[end]) != std::string_view::npos ||
         looksLikeCode(fragment.substr(0, end));
}

}  // namespace

bool isNumbered(std::string_view fragment) {
  // Letters, and behind at most three of them or a separator nothing but numbers.
  const auto* at = std::ranges::find_if_not(fragment, isLetter);
  if (at == fragment.end() || (at - fragment.begin() > 3 && isDigit(*at))) return false;
  return std::any_of(at, fragment.end(), isDigit) && std::none_of(at, fragment.end(), isLetter);
}

std::string_view nameOfFragment(std::string_view text, std::string_view fragment) {
  // Further behind, the words of a sentence agree by chance.
  constexpr std::ptrdiff_t furthest = 40;
  const std::string_view part = Tokens(text).partOf(FragmentLetters(fragment));
  if (part.empty()) return part;
  return part.data() - text.data() <= furthest ? part : std::string_view();
}

Definition definitionOfTerm(std::string_view text, std::span<const std::string_view> fragments) {
  const Relation relation(text, fragments);
  std::vector<TSName> names;
  add(names, relation.part, TSNameKind::definition);
  addOptions(text, names);
  if (names.empty()) addParts(text, names);
  return {relation.fragment, std::move(names)};
}

Definition definitionOfHeading(std::string_view text, std::span<const std::string_view> fragments) {
  text = withoutNumber(text);
  const Relation relation(text, fragments);
  std::vector<TSName> names;
  if (!relation.part.empty() && isNameIn(text, relation)) {
    add(names, relation.part, kindOf(relation.part));
  } else if (wordCount(text) <= mostNameWords && text.find_first_of("<>(){}=;|&") == text.npos) {
    add(names, text, TSNameKind::heading);
  }
  return {relation.fragment, std::move(names)};
}

}  // namespace quorvex
