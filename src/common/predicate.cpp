#include "common/predicate.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

/// In ICU's unit, a few milliseconds of matching each: about a second per subpath.
constexpr std::int32_t timeLimit = 500;
/// Bytes of backtracking stack; bounds the memory of one match.
constexpr std::int32_t stackLimit = 8 * 1024 * 1024;

icu::UnicodeString unicodeString(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

/// Longer texts are left to ICU, which may exceed its limits on them.
constexpr std::size_t mostKnownBytes = 64 * 1024;

/// Answers for the patterns that filter the pages of every book, without ICU: making its first
/// matcher takes as long as indexing several pages. Null for all other patterns.
std::optional<bool> knownAnswer(std::string_view pattern, std::string_view text) {
  if (text.size() > mostKnownBytes) return std::nullopt;
  if (pattern == Predicate::anyText) return true;
  if (pattern != Predicate::pageNames) return std::nullopt;
  // No other characters fold to these letters, and the end of the pattern is that of the text.
  const auto endsWith = [text](std::string_view ending) {
    return text.size() >= ending.size() &&
           std::ranges::equal(
               text.substr(text.size() - ending.size()), ending, [](char c, char lowered) {
                 return c == lowered || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == lowered);
               });
  };
  return endsWith(".html") || endsWith(".htm");
}

}  // namespace

struct Predicate::Matcher {
  std::string pattern;
  bool compiled = false;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::RegexMatcher> matcher;

  void compile() {
    compiled = true;
    // DOTALL: a subpath may contain line breaks and must match as a whole.
    constexpr std::uint32_t flags = UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL;
    matcher = std::make_unique<icu::RegexMatcher>(unicodeString(pattern), flags, status);
    if (U_FAILURE(status)) return;
    matcher->setTimeLimit(timeLimit, status);
    matcher->setStackLimit(stackLimit, status);
  }
};

Result<Predicate> Predicate::matching(std::string_view pattern) {
  if (!isValidUtf8(pattern)) return Error{"The regular expression is not UTF-8"};
  auto matcher = std::make_shared<Matcher>();
  matcher->pattern = pattern;
  return Predicate(std::move(matcher));
}

Result<bool> Predicate::evaluate(std::string_view text) const {
  if (text.size() > INT32_MAX) return Error{"The path is too long"};  // ICU's limit
  Matcher& matcher = *_matcher;
  if (const auto answer = knownAnswer(matcher.pattern, text)) return *answer;
  if (!matcher.compiled) matcher.compile();
  UErrorCode status = matcher.status;
  bool matches = false;
  if (U_SUCCESS(status)) {
    const icu::UnicodeString subject = unicodeString(text);
    matcher.matcher->reset(subject);
    matches = matcher.matcher->matches(status) != 0;
    matcher.matcher->reset();
  }
  if (U_FAILURE(status)) {
    return Error{"Can't do regex matching, reason: " + std::string(u_errorName(status)) +
                 " (pattern " + matcher.pattern + ")"};
  }
  return matches;
}

}  // namespace quorvex
