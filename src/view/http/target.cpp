#include "view/http/target.h"

#include <algorithm>

#include "common/url.h"

namespace quorvex::view {

namespace {

constexpr std::size_t mostBytes = 4096;

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

/// Whether every "%" begins an escape that does not hide a separator.
bool hasPlainEscapes(std::string_view raw) {
  constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
  for (std::size_t at = raw.find('%'); at != raw.npos; at = raw.find('%', at + 1)) {
    const std::string_view digits = raw.substr(at + 1, 2);
    if (digits.size() != 2 || digits.find_first_not_of(hexDigits) != digits.npos) return false;
    if (percentDecode(raw.substr(at, 3)) == "/") return false;
  }
  return true;
}

bool hasPlainSegments(std::string_view path) {
  if (path.starts_with('/')) path.remove_prefix(1);
  if (path.ends_with('/'))
    path.remove_suffix(1);
  else if (path.empty())
    return true;
  for (;;) {
    const std::string_view segment = path.substr(0, path.find('/'));
    if (segment.empty() || segment == "." || segment == "..") return false;
    if (segment.size() == path.size()) return true;
    path.remove_prefix(segment.size() + 1);
  }
}

std::string decodedParameter(std::string_view text) {
  std::string blanks(text);
  std::ranges::replace(blanks, '+', ' ');
  return percentDecode(blanks);
}

}  // namespace

std::optional<std::string> decodedPath(std::string_view raw) {
  if (raw.size() > mostBytes || raw.find(' ') != raw.npos || !hasPlainEscapes(raw)) {
    return std::nullopt;
  }
  std::string path = percentDecode(raw);
  if (path.find('\\') != path.npos || std::ranges::any_of(path, isControl) ||
      !hasPlainSegments(path)) {
    return std::nullopt;
  }
  return path;
}

std::map<std::string, std::string, std::less<>> parametersOf(std::string_view query) {
  std::map<std::string, std::string, std::less<>> parameters;
  while (!query.empty()) {
    const std::string_view one = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(one.size() + 1, query.size()));
    const std::string_view name = one.substr(0, one.find('='));
    const std::string_view value = one.substr(std::min(name.size() + 1, one.size()));
    if (!name.empty()) parameters.emplace(decodedParameter(name), decodedParameter(value));
  }
  return parameters;
}

}  // namespace quorvex::view
