#include "common/json.h"

#include <array>
#include <charconv>

#include "common/unicode.h"

namespace quorvex {

void appendJsonString(std::string& out, std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  const std::string valid = validUtf8(std::string(text));
  out += '"';
  for (std::size_t position = 0; position < valid.size();) {
    const std::size_t begin = position;
    const char32_t character = nextCharacter(valid, position);
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

void appendJsonMember(std::string& out, std::string_view name, std::string_view text) {
  out.append(",\"").append(name).append("\":");
  appendJsonString(out, text);
}

void appendJsonOptional(std::string& out, std::string_view name,
                        const std::optional<std::string>& text) {
  if (text) return appendJsonMember(out, name, std::string_view(*text));
  out.append(",\"").append(name).append("\":null");
}

void appendJsonStrings(std::string& out, const std::vector<std::string>& texts) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) out += ',';
    appendJsonString(out, texts[i]);
  }
}

std::string decimalText(double number, int decimals) {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                    std::chars_format::fixed, decimals);
  return {buffer.data(), result.ptr};
}

}  // namespace quorvex
