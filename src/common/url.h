#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex {

/// Percent-encodes every byte that may not stand in the path of a URL (RFC 3986: pchar and "/",
/// without ";", which older readers take for the start of parameters).
std::string percentEncodePath(std::string_view path);

/// Undoes percent-encoding; a "%" without two hexadecimal digits stays as it is.
std::string percentDecode(std::string_view text);

/// A URL or relative reference as RFC 3986 defines them, kept as its text. Immutable.
class URL {
 public:
  /// Null when the text is not a reference: a character that must be encoded, a "%" without two
  /// hexadecimal digits, or a colon in the first segment without a scheme before it. The empty text
  /// is one.
  static std::optional<URL> parse(std::string_view text);

  /// The "file" URL of an absolute path. Every byte of the path stays part of the path: "#" and "?"
  /// are encoded. Null when the path is not absolute or holds a NUL.
  static std::optional<URL> fileURL(std::string_view path);

  /// The whole text.
  const std::string& absoluteString() const { return _text; }

  /// The path, decoded.
  std::string path() const;

  friend bool operator==(const URL&, const URL&) = default;

 private:
  explicit URL(std::string text) : _text(std::move(text)) {}

  std::string _text;
};

}  // namespace quorvex
