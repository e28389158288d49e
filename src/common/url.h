#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex {

/// Percent-encodes every byte not allowed in a URL path (RFC 3986: pchar and "/", except ";", which
/// older readers treat as the start of parameters).
std::string percentEncodePath(std::string_view path);

/// Undoes percent-encoding; keeps a "%" without two hexadecimal digits.
std::string percentDecode(std::string_view text);

/// A URL or relative reference (RFC 3986), stored as text. Immutable.
class URL {
 public:
  /// Null if the text is not a reference: it has a character that must be encoded, a "%" without
  /// two hexadecimal digits, or a colon in the first segment without a scheme. Empty text is a
  /// reference.
  static std::optional<URL> parse(std::string_view text);

  /// Returns the "file" URL of an absolute path. Every byte stays part of the path: "#" and "?" are
  /// encoded. Null if the path is not absolute or contains a NUL.
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
