#pragma once

#include <string_view>

namespace quorvex::view {

/// What an element means for reading a page's bytes and its text.
enum class HtmlElement {
  other,       ///< displayed within a line: text goes on
  block,       ///< text ends before and behind it
  blank,       ///< displayed within a line, and separates words
  hidden,      ///< its text is not displayed, or is no place for other elements
  foreign,     ///< of another vocabulary, with rules of its own for what stands in it
  htmlInside,  ///< in a foreign element: back to HTML
  rawText,     ///< everything up to its end tag is text
  script,      ///< raw text that can hold its own end tag
  plainText,   ///< the rest of the page is text
  html,
  head,
  meta,
};

/// `name` may be in any case.
HtmlElement htmlElement(std::string_view name);

/// Whether two names are equal but for the case of ASCII letters.
bool isSameName(std::string_view name, std::string_view other);

/// Whether HTML counts a byte as white space.
inline bool isHtmlSpace(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r' && byte != '\v');
}

inline bool isAsciiLetter(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

inline bool isAsciiDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

}  // namespace quorvex::view
