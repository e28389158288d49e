#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "view/page/html_elements.h"

namespace quorvex::view {

/// A stretch of a page. The tokens of a page cover it without gaps.
struct HtmlToken {
  enum class Kind {
    end,      ///< of the page
    text,     ///< with character references
    rawText,  ///< of an element that holds nothing else
    startTag,
    endTag,
    doctype,
    comment,  ///< or whatever else browsers drop
  };
  Kind kind = Kind::end;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string_view name;  ///< of a tag, as written
  HtmlElement element = HtmlElement::other;
};

/// Cuts a page into tokens where the HTML standard's tokenizer does, as far as that is possible
/// without a tree. Takes time in proportion to the page, whatever it contains.
class HtmlTokens {
 public:
  explicit HtmlTokens(std::string_view page) : _page(page) {}

  HtmlToken next();
  /// Whether the position is within an element of another vocabulary (SVG, MathML).
  bool isWithinForeign() const { return !_foreign.empty(); }

 private:
  bool isMarkup(std::size_t position) const;
  HtmlToken until(std::size_t end, HtmlToken::Kind kind);
  HtmlToken tag();
  HtmlToken declaration();
  std::size_t behind(std::string_view sign, std::size_t from) const;
  std::size_t endOfComment() const;
  std::size_t endOfRawText() const;
  std::size_t endOfScript(std::size_t begin) const;
  bool hasNameAt(std::size_t position, std::string_view name) const;
  void enter(const HtmlToken& tag, bool isSelfClosing);
  void leave(HtmlElement element);
  bool isForeign() const { return !_foreign.empty() && _foreign.back(); }

  std::string_view _page;
  std::size_t _position = 0;
  std::string_view _rawName;  ///< of the element whose raw text comes next
  HtmlElement _rawElement = HtmlElement::other;
  std::vector<bool> _foreign;  ///< the open elements that lead into another vocabulary, or back
};

/// Walks the attributes of one tag.
class HtmlAttributes {
 public:
  /// `position`: behind the tag's name.
  HtmlAttributes(std::string_view page, std::size_t position) : _page(page), _position(position) {}

  /// Advances to the next attribute; false behind the last one.
  bool next();

  std::string_view name() const { return _name; }
  /// As written, without its quotation marks.
  std::string_view value() const { return _value; }

  // Once there is no further one:
  std::size_t end() const { return _position; }  ///< behind the tag
  bool isClosed() const { return _isClosed; }    ///< false if the page ended before
  bool isSelfClosing() const { return _isSelfClosing; }

 private:
  void skipBlanks();
  void readValue();
  bool isAt(char byte) const { return _position < _page.size() && _page[_position] == byte; }

  std::string_view _page;
  std::size_t _position;
  std::string_view _name;
  std::string_view _value;
  bool _isClosed = false;
  bool _isSelfClosing = false;
};

}  // namespace quorvex::view
