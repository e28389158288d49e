#include "search/hit_text.h"

#include <array>
#include <charconv>
#include <cmath>

#include "common/unicode.h"
#include "common/url.h"

namespace quorvex {

namespace {

constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view plain = "\x1B[22m";
constexpr std::string_view ellipsis = "\u2026";

/// In code points; longer descriptions are cut.
constexpr std::size_t mostDescription = 200;

/// C0, DEL and C1, and the line and paragraph separators.
bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x2028 ||
         character == 0x2029;
}

/// Embeddings, overrides and isolates: they can reverse the rest of the line.
bool isDirectional(char32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

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

void appendJsonString(std::string& out, const std::string& text) {
  constexpr std::string_view digits = "0123456789abcdef";
  const std::string valid = validUtf8(text);
  out += '"';
  for (std::size_t position = 0; position < valid.size();) {
    const std::size_t begin = position;
    const char32_t character = nextCharacter(valid, position);
    // JSON may go to a terminal too.
    if (isControl(character) || isDirectional(character)) {
      out += "\\u";
      for (unsigned shift = 16; shift > 0; shift -= 4)
        out += digits[character >> (shift - 4) & 0xFU];
    } else {
      if (character == '"' || character == '\\') out += '\\';
      out.append(valid, begin, position - begin);
    }
  }
  out += '"';
}

void appendJsonMember(std::string& out, std::string_view name, const std::string& text) {
  out.append(",\"").append(name).append("\":");
  appendJsonString(out, text);
}

void appendJsonMember(std::string& out, std::string_view name,
                      const std::optional<std::string>& text) {
  if (text) return appendJsonMember(out, name, *text);
  out.append(",\"").append(name).append("\":null");
}

void appendJsonBook(std::string& out, const Hit& hit, std::string_view book) {
  if (book.empty()) return;
  out += ",\"index\":" + std::to_string(hit.index + 1);
  appendJsonMember(out, "book", std::string(book));
}

std::string numberText(double number, int decimals = 4) {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                    std::chars_format::fixed, decimals);
  return {buffer.data(), result.ptr};
}

/// Appends the ranges of a text in code points and in bytes.
void appendJsonRanges(std::string& out, std::string_view text,
                      const std::vector<TextRange>& ranges) {
  out += ",\"matches\":[";
  std::size_t position = 0;
  std::size_t characters = 0;
  const auto charactersAt = [&](std::size_t byte) {
    for (; position < byte && position < text.size(); ++characters)
      nextCharacter(text, position);
    return characters;
  };
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const auto& [begin, end] = ranges[i];
    if (i > 0) out += ',';
    out += "{\"characters\":[" + std::to_string(charactersAt(begin)) + ',';
    out += std::to_string(charactersAt(end)) + "],\"bytes\":[" + std::to_string(begin) + ',';
    out += std::to_string(end) + "]}";
  }
  out += ']';
}

void appendJsonSnippet(std::string& out, const HelpPlace& place) {
  out += ",\"snippet\":";
  if (!place.snippet) {
    out += "null";
    return;
  }
  out += "{\"text\":";
  appendJsonString(out, *place.snippet);
  appendJsonRanges(out, *place.snippet, place.snippetMatches);
  out += '}';
}

void appendJsonTexts(std::string& out, const std::vector<std::string>& texts) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) out += ',';
    appendJsonString(out, texts[i]);
  }
}

void appendJsonHeadings(std::string& out, const HelpPlace& place) {
  out += ",\"headings\":[";
  appendJsonTexts(out, place.headings);
  out += ']';
}

void appendJsonPlaces(std::string& out, const std::vector<HelpPlace>& places) {
  out += ",\"places\":[";
  for (std::size_t i = 0; i < places.size(); ++i) {
    const HelpPlace& place = places[i];
    out += i > 0 ? ",{\"fragment\":" : "{\"fragment\":";
    appendJsonString(out, place.fragment);
    out += ",\"score\":" + numberText(place.score);
    appendJsonHeadings(out, place);
    appendJsonSnippet(out, place);
    out += '}';
  }
  out += ']';
}

void appendJsonParts(std::string& out, const std::vector<ScorePart>& parts) {
  if (parts.empty()) return;
  out += ",\"parts\":[";
  for (std::size_t i = 0; i < parts.size(); ++i) {
    out += i > 0 ? ",{\"name\":" : "{\"name\":";
    appendJsonString(out, parts[i].name);
    out += ",\"value\":" + numberText(parts[i].value) + '}';
  }
  out += ']';
}

std::string_view nameOf(QueryState state) {
  switch (state) {
    case QueryState::noWords:
      return "noWords";
    case QueryState::onlyStopWords:
      return "onlyStopWords";
    case QueryState::onlyExcluded:
      return "onlyExcluded";
    case QueryState::answered:
      break;
  }
  return "answered";
}

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
  std::string text = "score " + numberText(hit.score, decimals);
  std::string_view sign = " = ";
  for (const ScorePart& part : hit.parts) {
    if (std::abs(part.value) < 0.0005) continue;
    if (part.value < 0) sign = sign == " = " ? " = -" : " - ";
    text.append(sign).append(printable(part.name)).append(" ");
    text += numberText(std::abs(part.value), decimals);
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

std::string hitAsJson(const Hit& hit, std::size_t number, std::string_view book) {
  const HelpPlace best = hit.places.empty() ? HelpPlace() : hit.places.front();
  std::string out = "{\"rank\":" + std::to_string(number) + ",\"score\":" + numberText(hit.score);
  appendJsonBook(out, hit, book);
  appendJsonMember(out, "path", hit.page.path);
  appendJsonMember(out, "fragment", best.fragment);
  appendJsonMember(out, "address", percentEncodePath(hit.page.path) + fragmentOf(hit));
  if (hit.name) appendJsonMember(out, "name", *hit.name);
  appendJsonMember(out, "title", hit.page.title);
  appendJsonHeadings(out, best);
  appendJsonMember(out, "description", hit.page.description);
  appendJsonSnippet(out, best);
  appendJsonPlaces(out, hit.places);
  appendJsonParts(out, hit.parts);
  return out += "}\n";
}

std::string resultAsJson(const SearchResult& result, std::span<const IndexContents> books) {
  std::string out = "{\"hits\":" + std::to_string(result.hits.size());
  appendJsonMember(out, "state", std::string(nameOf(result.state)));
  appendJsonMember(out, "suggestion", result.suggestion);
  appendJsonMember(out, "searched", result.searched);
  if (!result.explanation.empty()) {
    out += ",\"explanation\":[";
    appendJsonTexts(out, result.explanation);
    out += ']';
  }
  out += books.size() == 1 ? ",\"book\":" : ",\"books\":[";
  for (std::size_t i = 0; i < books.size(); ++i) {
    std::string members;
    appendJsonMember(members, "title", books[i].title);
    appendJsonMember(members, "language", books[i].language);
    out.append(i > 0 ? ",{" : "{").append(members, 1).append("}");
  }
  if (books.size() != 1) out += ']';
  return out += "}\n";
}

std::string pathAsText(const Hit& hit, std::string_view book) {
  return printable(hit.page.path) + (book.empty() ? "" : "  " + printable(book)) + '\n';
}

std::string pathAsJson(const Hit& hit, std::string_view book) {
  std::string out = "{\"path\":";
  appendJsonString(out, hit.page.path);
  appendJsonBook(out, hit, book);
  return out += "}\n";
}

std::string fragmentOf(const Hit& hit) {
  if (hit.places.empty() || hit.places.front().fragment.empty()) return {};
  return '#' + percentEncodePath(hit.places.front().fragment);
}

}  // namespace quorvex
