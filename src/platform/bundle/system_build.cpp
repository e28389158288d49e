#include <algorithm>
#include <limits>

#include <sys/utsname.h>

#include "common/files.h"
#include "common/unicode.h"
#include "platform/bundle.h"

namespace quorvex {

namespace {

/// os-release files have a few hundred bytes.
constexpr std::uint64_t largestOsRelease = std::uint64_t{64} * 1024;

/// Removes the shell quoting that os-release(5) allows from an assigned value.
std::string unquoted(std::string_view value) {
  value = trimWhitespaceAndNewlines(value);
  std::string text;
  char quote = '\0';
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char character = value[i];
    if (character == '\\' && quote != '\'' && i + 1 < value.size()) {
      text += value[++i];
    } else if (quote == '\0' && (character == '"' || character == '\'')) {
      quote = character;
    } else if (character == quote) {
      quote = '\0';
    } else {
      text += character;
    }
  }
  return text;
}

}  // namespace

std::optional<std::string> buildOfOsRelease(std::string_view text) {
  std::optional<std::string> build;
  std::optional<std::string> version;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view name = trimWhitespace(line.substr(0, equals));
    if (name == "BUILD_ID") build = unquoted(line.substr(equals + 1));
    if (name == "VERSION_ID") version = unquoted(line.substr(equals + 1));
  }
  if (build && !build->empty()) return build;
  if (version && !version->empty()) return version;
  return std::nullopt;
}

std::optional<std::string> systemBuildVersion() {
  for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
    if (const Result<Data> file = readFile(path, largestOsRelease)) {
      if (std::optional<std::string> build = buildOfOsRelease(file->bytes())) return build;
      break;  // the second file is a fallback for a missing first one
    }
  }
  utsname system{};
  if (::uname(&system) != 0) return std::nullopt;
  return std::string(static_cast<const char*>(system.release));
}

std::int32_t integerValue(std::string_view text) {
  text = trimWhitespaceAndNewlines(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  constexpr std::int64_t beyond = std::int64_t{1} << 40U;  // no further digit can matter
  std::int64_t number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') break;
    number = std::min(number * 10 + (digit - '0'), beyond);
  }
  if (negative) number = -number;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      number, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

}  // namespace quorvex
