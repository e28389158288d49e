#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex {

/// A locale, given by its identifier ("en_US"). Immutable.
class Locale {
 public:
  /// Returns null if ICU does not understand the identifier. Unknown languages are valid.
  static std::optional<Locale> withIdentifier(std::string_view identifier);

  /// Reads the user's locale from LC_ALL, LC_MESSAGES or LANG, as ICU does.
  static Locale current();

  /// As given, with "_" between its parts.
  const std::string& identifier() const { return _identifier; }
  /// Returns the lower-case language subtag ("en" of "en_US"), empty if there is none.
  std::string language() const;
  /// Whether ICU knows the language, by its code of ISO 639.
  bool hasKnownLanguage() const;

 private:
  explicit Locale(std::string identifier) : _identifier(std::move(identifier)) {}

  std::string _identifier;
};

/// Whether a text has the form of a language tag ("de", "zh-Hant-TW"): 1 to 35 letters, digits and
/// hyphens, in ASCII.
bool isLanguageTag(std::string_view text);

/// Throws std::bad_alloc if there is too little memory for ICU to start with: it deadlocks or
/// crashes when its first use runs out of memory.
void requireMemoryForIcu();

/// Unsets LC_ALL, LC_MESSAGES and LANG where they are empty: POSIX treats empty as unset, but ICU
/// uses the first one that is set. Call at program start, before other threads exist and before
/// using ICU.
void unsetEmptyLocaleVariables();

}  // namespace quorvex
