#include "common/url.h"

#include <algorithm>

namespace quorvex {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

bool isAlpha(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool contains(std::string_view set, char c) {
  return set.find(c) != std::string_view::npos;
}

bool isAllowedInPath(char c) {
  return isAlpha(c) || isDigit(c) || contains("-._~!$&'()*+,=:@/", c);
}

bool isAllowedInURL(char c) {
  return isAllowedInPath(c) || contains(";?#[]%", c);
}

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool startsWithEscape(std::string_view text) {
  return text.size() >= 3 && text[0] == '%' && hexValue(text[1]) >= 0 && hexValue(text[2]) >= 0;
}

/// Length of "scheme:" at the start of `text`, 0 when there is none.
std::size_t schemeLength(std::string_view text) {
  if (text.empty() || !isAlpha(text.front())) return 0;
  const auto end = std::ranges::find_if_not(
      text, [](char c) { return isAlpha(c) || isDigit(c) || contains("+-.", c); });
  return end != text.end() && *end == ':' ? static_cast<std::size_t>(end - text.begin()) + 1 : 0;
}

}  // namespace

std::string percentEncodePath(std::string_view path) {
  std::string encoded;
  encoded.reserve(path.size());
  for (const char c : path) {
    if (isAllowedInPath(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', hexDigits[byte >> 4U], hexDigits[byte & 15U]};
    }
  }
  return encoded;
}

std::string percentDecode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  while (!text.empty()) {
    if (startsWithEscape(text)) {
      decoded += static_cast<char>(hexValue(text[1]) * 16 + hexValue(text[2]));
      text.remove_prefix(3);
    } else {
      decoded += text.front();
      text.remove_prefix(1);
    }
  }
  return decoded;
}

std::optional<URL> URL::parse(std::string_view text) {
  if (!std::ranges::all_of(text, isAllowedInURL)) return std::nullopt;
  for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%', at + 1)) {
    if (!startsWithEscape(text.substr(at))) return std::nullopt;
  }
  if (schemeLength(text) == 0) {
    const std::string_view firstSegment = text.substr(0, text.find_first_of("/?#"));
    if (contains(firstSegment, ':')) return std::nullopt;
  }
  return URL(std::string(text));
}

std::optional<URL> URL::fileURL(std::string_view path) {
  if (!path.starts_with('/') || contains(path, '\0')) return std::nullopt;
  return URL("file://" + percentEncodePath(path));
}

std::string URL::path() const {
  std::string_view rest = _text;
  rest.remove_prefix(schemeLength(rest));
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    rest.remove_prefix(std::min(rest.find('/'), rest.size()));
  }
  return percentDecode(rest);
}

}  // namespace quorvex
