#include "common/locale.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <unicode/locid.h>

namespace quorvex {

namespace {

/// ICU limits the length of locale identifiers.
constexpr std::size_t longestIdentifier = ULOC_FULLNAME_CAPACITY - 1;

/// What RFC 5646 asks programs to have room for.
constexpr std::size_t longestLanguageTag = 35;

bool isAsciiLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

bool isLanguageTag(std::string_view text) {
  return !text.empty() && text.size() <= longestLanguageTag &&
         std::ranges::all_of(text, [](char c) { return c == '-' || isAsciiLetterOrDigit(c); });
}

void requireMemoryForIcu() {
  constexpr std::size_t whatItTakes = 65'536;
  ::operator delete(::operator new(whatItTakes));
}

std::optional<Locale> Locale::withIdentifier(std::string_view identifier) {
  if (identifier.empty() || identifier.size() > longestIdentifier ||
      identifier.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  requireMemoryForIcu();
  const icu::Locale locale(std::string(identifier).c_str());
  if (locale.isBogus() || *locale.getName() == '\0') return std::nullopt;
  return Locale(locale.getName());
}

Locale Locale::current() {
  requireMemoryForIcu();
  return Locale(icu::Locale::getDefault().getName());
}

std::string Locale::language() const {
  return icu::Locale(_identifier.c_str()).getLanguage();
}

bool Locale::hasKnownLanguage() const {
  return *icu::Locale(_identifier.c_str()).getISO3Language() != '\0';
}

void unsetEmptyLocaleVariables() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there are no other threads yet
    const char* value = std::getenv(name);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): as above
    if (value != nullptr && *value == '\0') ::unsetenv(name);
  }
}

}  // namespace quorvex
