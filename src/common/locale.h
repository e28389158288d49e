#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex {

/// A locale, known by its identifier ("en_US"). Immutable.
class Locale {
 public:
  /// Null when the text is not an identifier that ICU understands. Unknown languages are locales
  /// all the same.
  static std::optional<Locale> withIdentifier(std::string_view identifier);

  /// The user's: from LC_ALL, LC_MESSAGES or LANG as ICU reads them.
  static Locale current();

  /// As given, with "_" between its parts.
  const std::string& identifier() const { return _identifier; }
  /// The language subtag in lower case: "en" of "en_US"; empty when there is none.
  std::string language() const;

 private:
  explicit Locale(std::string identifier) : _identifier(std::move(identifier)) {}

  std::string _identifier;
};

/// Takes LC_ALL, LC_MESSAGES and LANG out of the environment where they are empty: to POSIX that is
/// as good as unset, but ICU takes the first that is set for the answer. For the start of a
/// program: before there are other threads, and before anybody asks ICU.
void unsetEmptyLocaleVariables();

}  // namespace quorvex
