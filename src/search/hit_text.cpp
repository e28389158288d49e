#include "search/hit_text.h"

#include <array>
#include <charconv>

#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view plain = "\x1B[22m";

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

std::string shownText(std::string_view text, const std::vector<TextRange>& matches, bool emphasised,
                      std::size_t mostCharacters) {
  std::string out;
  auto match = matches.begin();
  bool isOpen = false;
  std::size_t position = 0;
  for (; position < text.size() && mostCharacters > 0; --mostCharacters) {
    if (isOpen && position >= match->end) {
      out += plain;
      isOpen = false;
      ++match;
    }
    if (emphasised && match != matches.end() && position >= match->begin && !isOpen) {
      out += bold;
      isOpen = true;
    }
    appendShown(out, text, position);
  }
  if (isOpen) out += plain;
  if (position < text.size()) out += "\u2026";
  return out;
}

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

std::string numberText(double number) {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                    std::chars_format::fixed, 4);
  return {buffer.data(), result.ptr};
}

}  // namespace

std::string printable(std::string_view text) {
  return shownText(text, {}, false, SIZE_MAX);
}

std::string hitAsText(const Hit& hit, std::size_t number, bool emphasised) {
  const HelpPage& page = hit.page;
  const std::string rank = std::to_string(number) + ". ";
  const std::string margin(rank.size(), ' ');
  std::string out = rank;
  if (page.title.empty()) {
    out += "(no title)";
  } else {
    out += shownText(page.title, hit.titleMatches, emphasised, SIZE_MAX);
  }
  out += '\n' + margin + printable(page.path) + '\n';
  if (!page.description.empty()) {
    out += margin +
           shownText(page.description, hit.descriptionMatches, emphasised, mostDescription) + '\n';
  }
  return out;
}

std::string hitAsJson(const Hit& hit, std::size_t number) {
  std::string out = "{\"rank\":" + std::to_string(number) + ",\"score\":" + numberText(hit.score);
  appendJsonMember(out, "path", hit.page.path);
  appendJsonMember(out, "fragment", hit.places.empty() ? std::string() : hit.places[0].fragment);
  appendJsonMember(out, "title", hit.page.title);
  appendJsonMember(out, "description", hit.page.description);
  return out += "}\n";
}

std::string pathAsJson(const std::string& path) {
  std::string out = "{\"path\":";
  appendJsonString(out, path);
  return out += "}\n";
}

}  // namespace quorvex
