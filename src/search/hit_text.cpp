#include "search/hit_text.h"

#include <cmath>

#include "common/json.h"
#include "common/unicode.h"
#include "common/url.h"

namespace quorvex {

namespace {

constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view plain = "\x1B[22m";
constexpr std::string_view ellipsis = "\u2026";

/// In code points; longer descriptions are cut.
constexpr std::size_t mostDescription = 200;

/// Appends one character safely for a terminal.
void appendShown(std::string& out, std::string_view text, std::size_t& position) {
  const std::size_t begin = position;
  const char32_t character = nextCharacter(text, position);
  if (isControl(character)) {
    out += ' ';
  } else if (!isDirectional(character)) {
    out += validUtf8(std::string(text.substr(begin, position - begin)));
  }
}

/// Writes text onto lines of a width, each behind a margin. Lines end between words, or, where a
/// script uses no blanks, between characters.
class Lines {
 public:
  Lines(std::string margin, const TextStyle& style) : _margin(std::move(margin)), _style(style) {}

  /// Starts a line; `label` stands in the margin.
  void start(std::string_view label = {}) {
    if (!_out.empty()) _out += '\n';
    _out += label.empty() ? std::string_view(_margin) : label;
    _column = _margin.size();
    _hasWord = false;
  }

  void add(std::string_view text, const std::vector<TextRange>& matches = {},
           std::size_t mostCharacters = SIZE_MAX) {
    auto match = matches.begin();
    std::size_t position = 0;
    for (; position < text.size() && mostCharacters > 0; --mostCharacters) {
      while (match != matches.end() && position >= match->end)
        ++match;
      const bool isMatch = match != matches.end() && position >= match->begin;
      if (!isMatch) endBold();
      const std::size_t begin = position;
      const char32_t character = nextCharacter(text, position);
      if (character == ' ') {
        endWord();
        _pendingBlank = true;
        continue;
      }
      if (isWide(character)) endWord();
      if (isMatch && !_isBold && _style.emphasised) {
        _word += bold;
        _isBold = true;
      }
      position = begin;
      appendShown(_word, text, position);
      _wordWidth += displayWidth(character);
    }
    endBold();
    if (position < text.size()) {
      _word += ellipsis;
      ++_wordWidth;
    }
    endWord();
    _pendingBlank = false;
  }

  std::string take() {
    _out += '\n';
    return std::move(_out);
  }

 private:
  void endBold() {
    if (_isBold) _word += plain;
    _isBold = false;
  }

  void endWord() {
    if (_word.empty()) return;
    const std::size_t blank = _pendingBlank && _hasWord ? 1 : 0;
    if (_style.columns > 0 && _hasWord && _column + blank + _wordWidth > _style.columns) {
      _out += '\n' + _margin;
      _column = _margin.size();
    } else if (blank > 0) {
      _out += ' ';
      ++_column;
    }
    _out += _word;
    _column += _wordWidth;
    _hasWord = true;
    _pendingBlank = false;
    _word.clear();
    _wordWidth = 0;
  }

  std::string _margin;
  const TextStyle& _style;
  std::string _out;
  std::size_t _column = 0;
  bool _hasWord = false;  ///< on this line
  bool _pendingBlank = false;
  bool _isBold = false;
  std::string _word;
  std::size_t _wordWidth = 0;
};

/// The way down to a place: "Options \u203A --clean".
std::string wayTo(const HelpPlace& place, std::string_view book) {
  std::string way = printable(book);
  for (const std::string& heading : place.headings)
    way.append(way.empty() ? "" : " \u203A ").append(printable(heading));
  return way;
}

/// "score 0.812 = words 0.700 + title 0.212 - list of links or code 0.100"
std::string shownParts(const Hit& hit) {
  constexpr int decimals = 3;
  std::string text = "score " + decimalText(hit.score, decimals);
  std::string_view sign = " = ";
  for (const ScorePart& part : hit.parts) {
    if (std::abs(part.value) < 0.0005) continue;
    if (part.value < 0) sign = sign == " = " ? " = -" : " - ";
    text.append(sign).append(printable(part.name)).append(" ");
    text += decimalText(std::abs(part.value), decimals);
    sign = " + ";
  }
  return text;
}

/// As it stands in the page: readable, and not yet a URL.
std::string shownAddress(const Hit& hit) {
  std::string address = hit.page.path;
  if (!hit.places.empty() && !hit.places.front().fragment.empty()) {
    address.append("#").append(hit.places.front().fragment);
  }
  return printable(address);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  for (std::size_t position = 0; position < text.size();)
    appendShown(shown, text, position);
  return shown;
}

std::string hitAsText(const Hit& hit, std::size_t number, const TextStyle& style,
                      std::string_view book) {
  const HelpPage& page = hit.page;
  const std::string rank = std::to_string(number) + ". ";
  Lines lines(std::string(rank.size(), ' '), style);
  lines.start(rank);
  lines.add(page.title.empty() ? "(no title)" : page.title, hit.titleMatches);
  // Not wrapped: it is to be copied.
  std::string text = lines.take() + std::string(rank.size(), ' ') + shownAddress(hit) + '\n';
  Lines below(std::string(rank.size(), ' '), style);
  const HelpPlace place = hit.places.empty() ? HelpPlace() : hit.places.front();
  const std::string way = wayTo(place, book);
  if (!way.empty()) {
    below.start();
    below.add(way);
  }
  if (place.snippet) {
    below.start();
    below.add(*place.snippet, place.snippetMatches);
  } else if (!page.description.empty()) {
    below.start();
    below.add(page.description, hit.descriptionMatches, mostDescription);
  } else if (way.empty() && hit.parts.empty()) {
    return text;
  }
  if (!hit.parts.empty()) {
    below.start();
    below.add(shownParts(hit));
  }
  return text + below.take();
}

std::string nameAsText(const Hit& hit, std::string_view book) {
  const std::string end = book.empty() ? "" : "  " + printable(book);
  return printable(hit.name.value_or(hit.page.title)) + "  " + shownAddress(hit) + end + '\n';
}

std::string pathAsText(const Hit& hit, std::string_view book) {
  return printable(hit.page.path) + (book.empty() ? "" : "  " + printable(book)) + '\n';
}

std::string fragmentOf(const Hit& hit) {
  if (hit.places.empty() || hit.places.front().fragment.empty()) return {};
  return '#' + percentEncodePath(hit.places.front().fragment);
}

}  // namespace quorvex
