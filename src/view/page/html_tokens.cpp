#include "view/page/html_tokens.h"

#include <algorithm>

namespace quorvex::view {

namespace {

constexpr auto none = std::string_view::npos;

bool endsName(char byte) {
  return isHtmlSpace(byte) || byte == '/' || byte == '>';
}

}  // namespace

HtmlToken HtmlTokens::next() {
  if (_rawElement != HtmlElement::other) {
    const std::size_t end = endOfRawText();
    _rawElement = HtmlElement::other;
    if (end > _position) return until(end, HtmlToken::Kind::rawText);
  }
  if (_position == _page.size()) return until(_position, HtmlToken::Kind::end);
  if (isMarkup(_position)) {
    const char sign = _page[_position + 1];
    if (sign == '!') return declaration();
    if (sign == '?') return until(behind(">", _position + 2), HtmlToken::Kind::comment);
    return tag();
  }
  std::size_t end = _page.find('<', _position + 1);
  while (end != none && !isMarkup(end))
    end = _page.find('<', end + 1);
  return until(std::min(end, _page.size()), HtmlToken::Kind::text);
}

/// Whether a "<" is more than text. "</" at the end of the page is text, too, but would swallow
/// what is put behind it.
bool HtmlTokens::isMarkup(std::size_t position) const {
  if (_page[position] != '<' || position + 1 == _page.size()) return false;
  const char sign = _page[position + 1];
  return isAsciiLetter(sign) || sign == '/' || sign == '!' || sign == '?';
}

HtmlToken HtmlTokens::until(std::size_t end, HtmlToken::Kind kind) {
  HtmlToken token;
  token.kind = kind;
  token.begin = _position;
  token.end = _position = end;
  return token;
}

HtmlToken HtmlTokens::tag() {
  const bool isEnd = _page[_position + 1] == '/';
  const std::size_t nameBegin = _position + (isEnd ? 2 : 1);
  if (nameBegin == _page.size() || !isAsciiLetter(_page[nameBegin])) {
    return until(behind(">", nameBegin), HtmlToken::Kind::comment);
  }
  std::size_t nameEnd = nameBegin;
  while (nameEnd < _page.size() && !endsName(_page[nameEnd]))
    ++nameEnd;
  HtmlAttributes attributes(_page, nameEnd);
  while (attributes.next()) {
  }
  if (!attributes.isClosed()) return until(_page.size(), HtmlToken::Kind::comment);
  HtmlToken token =
      until(attributes.end(), isEnd ? HtmlToken::Kind::endTag : HtmlToken::Kind::startTag);
  token.name = _page.substr(nameBegin, nameEnd - nameBegin);
  token.element = htmlElement(token.name);
  if (isEnd) {
    leave(token.element);
  } else {
    enter(token, attributes.isSelfClosing());
  }
  return token;
}

HtmlToken HtmlTokens::declaration() {
  const std::string_view rest = _page.substr(_position + 2);
  if (rest.starts_with("--")) return until(endOfComment(), HtmlToken::Kind::comment);
  if (isForeign() && rest.starts_with("[CDATA[")) {
    return until(behind("]]>", _position + 9), HtmlToken::Kind::comment);
  }
  const std::size_t end = behind(">", _position + 2);
  const bool isDoctype = isSameName(rest.substr(0, 7), "doctype") && _page[end - 1] == '>';
  return until(end, isDoctype ? HtmlToken::Kind::doctype : HtmlToken::Kind::comment);
}

/// The end of the page if there is no such sign.
std::size_t HtmlTokens::behind(std::string_view sign, std::size_t from) const {
  const std::size_t found = _page.find(sign, from);
  return found == none ? _page.size() : found + sign.size();
}

/// A comment may end with the dashes it begins with, and with "--!>".
std::size_t HtmlTokens::endOfComment() const {
  const std::size_t begin = _position + 2;
  for (std::size_t at = begin; (at = _page.find("--", at)) != none; ++at) {
    const std::string_view rest = _page.substr(at + 2, 2);
    if (rest.starts_with('>')) return at + 3;
    if (rest == "!>" && at >= begin + 2) return at + 4;
  }
  return _page.size();
}

std::size_t HtmlTokens::endOfRawText() const {
  if (_rawElement == HtmlElement::plainText) return _page.size();
  std::size_t end = _page.find("</", _position);
  while (end != none && !hasNameAt(end + 2, _rawName))
    end = _page.find("</", end + 2);
  end = std::min(end, _page.size());
  const bool hasComment = _rawElement == HtmlElement::script &&
                          _page.substr(_position, end - _position).find("<!--") != none;
  return hasComment ? endOfScript(_position) : end;
}

/// Behind "<!--", a script may hold another one with its tags, up to "-->".
std::size_t HtmlTokens::endOfScript(std::size_t begin) const {
  bool isComment = false;
  bool isNested = false;
  for (std::size_t at = begin; at < _page.size(); ++at) {
    if (_page[at] != '<' && _page[at] != '-') continue;
    const std::string_view rest = _page.substr(at);
    if (rest.starts_with("-->")) {
      isComment = isNested = false;
    } else if (!isComment && rest.starts_with("<!--")) {
      isComment = true;
      ++at;  // its dashes may be those of "-->"
    } else if (rest.starts_with("</") && hasNameAt(at + 2, _rawName)) {
      if (!isNested) return at;
      isNested = false;
    } else if (isComment && rest.starts_with('<') && hasNameAt(at + 1, _rawName)) {
      isNested = true;
    }
  }
  return _page.size();
}

bool HtmlTokens::hasNameAt(std::size_t position, std::string_view name) const {
  const std::size_t end = position + name.size();
  return end < _page.size() && endsName(_page[end]) &&
         isSameName(_page.substr(position, name.size()), name);
}

void HtmlTokens::enter(const HtmlToken& tag, bool isSelfClosing) {
  switch (tag.element) {
    case HtmlElement::foreign:
      if (!isSelfClosing) _foreign.push_back(true);
      break;
    case HtmlElement::htmlInside:
      if (!isSelfClosing && isForeign()) _foreign.push_back(false);
      break;
    case HtmlElement::block:
      // No element of another vocabulary holds it: browsers end those that are open.
      while (isForeign())
        _foreign.pop_back();
      break;
    case HtmlElement::rawText:
    case HtmlElement::script:
    case HtmlElement::plainText:
      if (isForeign()) break;
      _rawName = tag.name;
      _rawElement = tag.element;
      break;
    default:
      break;
  }
}

void HtmlTokens::leave(HtmlElement element) {
  if (_foreign.empty()) return;
  const bool leadsBack = element == HtmlElement::htmlInside;
  if (!leadsBack && element != HtmlElement::foreign) return;
  if (_foreign.back() != leadsBack) _foreign.pop_back();
}

bool HtmlAttributes::next() {
  _isSelfClosing = false;
  while (_position < _page.size() && (isHtmlSpace(_page[_position]) || isAt('/'))) {
    _isSelfClosing = isAt('/');
    ++_position;
  }
  if (_position == _page.size()) return false;
  if (isAt('>')) {
    ++_position;
    _isClosed = true;
    return false;
  }
  const std::size_t begin = _position++;  // may even be "="
  while (_position < _page.size() && !endsName(_page[_position]) && !isAt('='))
    ++_position;
  _name = _page.substr(begin, _position - begin);
  _value = {};
  skipBlanks();
  if (isAt('=')) readValue();
  return true;
}

void HtmlAttributes::skipBlanks() {
  while (_position < _page.size() && isHtmlSpace(_page[_position]))
    ++_position;
}

void HtmlAttributes::readValue() {
  ++_position;
  skipBlanks();
  if (_position == _page.size() || isAt('>')) return;
  const char mark = _page[_position];
  const bool isQuoted = mark == '"' || mark == '\'';
  const std::size_t begin = isQuoted ? _position + 1 : _position;
  std::size_t end = begin;
  if (isQuoted) {
    end = std::min(_page.find(mark, begin), _page.size());
  } else {
    while (end < _page.size() && !isHtmlSpace(_page[end]) && _page[end] != '>')
      ++end;
  }
  _value = _page.substr(begin, end - begin);
  _position = isQuoted && end < _page.size() ? end + 1 : end;
}

}  // namespace quorvex::view
