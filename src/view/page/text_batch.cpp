#include "view/page/text_batch.h"

#include <algorithm>

#include "common/unicode.h"
#include "view/page/character_references.h"
#include "view/page/html_elements.h"

namespace quorvex::view {

namespace {

/// Returns the end of the character that `position` is in, or `position` between two of them.
std::size_t characterEnd(std::string_view text, std::size_t position) {
  while (position < text.size() && (static_cast<unsigned char>(text[position]) & 0xC0U) == 0x80U)
    ++position;
  return position;
}

}  // namespace

void TextBatch::append(std::string_view page, TextRange range) {
  const std::string_view upToEnd = page.substr(0, range.end);
  std::size_t begin = range.begin;
  for (std::size_t at = upToEnd.find('&', begin); at != std::string_view::npos;) {
    const CharacterReference reference = characterReference(upToEnd, at);
    const std::size_t next = at + std::max<std::size_t>(reference.size, 1);
    if (reference.size > 0) {
      appendVerbatim(page, {begin, at});
      const std::size_t textBegin = _text.size();
      appendCharacter(reference.character, _text);
      _pieces.push_back({{textBegin, _text.size()}, {at, next}, false});
      begin = next;
    }
    at = upToEnd.find('&', next);
  }
  appendVerbatim(page, {begin, range.end});
}

void TextBatch::appendVerbatim(std::string_view page, TextRange range) {
  if (range.begin == range.end) return;
  const std::size_t begin = _text.size();
  _text += page.substr(range.begin, range.end - range.begin);
  // A line break of the page ends no block.
  std::replace(_text.begin() + static_cast<std::ptrdiff_t>(begin), _text.end(), '\n', ' ');
  _pieces.push_back({{begin, _text.size()}, range, true});
}

void TextBatch::separate(char separator) {
  if (_text.empty() || _text.back() == '\n') return;
  if (separator == ' ' && _text.back() == ' ') return;
  _text += separator;
}

void TextBatch::clear() {
  _text.clear();
  _pieces.clear();
}

bool TextBatch::endsWithSpace() const {
  return !_text.empty() && isHtmlSpace(_text.back());
}

std::vector<TextRange> TextBatch::Sources::of(TextRange range) {
  std::vector<TextRange> sources;
  const std::vector<Piece>& pieces = _batch._pieces;
  while (_piece < pieces.size() && pieces[_piece].text.end <= range.begin)
    ++_piece;
  for (std::size_t i = _piece; i < pieces.size() && pieces[i].text.begin < range.end; ++i) {
    const Piece& piece = pieces[i];
    TextRange source = piece.source;
    if (piece.isVerbatim) {
      const std::size_t begin = std::max(range.begin, piece.text.begin) - piece.text.begin;
      const std::size_t end = std::min(range.end, piece.text.end) - piece.text.begin;
      source.begin = characterStart(_page, piece.source.begin + begin, piece.source.begin);
      source.end = characterEnd(_page.substr(0, piece.source.end), piece.source.begin + end);
    }
    if (!sources.empty() && sources.back().end == source.begin) {
      sources.back().end = source.end;
    } else {
      sources.push_back(source);
    }
  }
  return sources;
}

}  // namespace quorvex::view
