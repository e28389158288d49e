#include "view/page/marked_page.h"

#include <algorithm>

#include "view/page/html_tokens.h"
#include "view/page/page_encoding.h"
#include "view/page/text_batch.h"

namespace quorvex::view {

namespace {

/// More would help no reader, and cost the browser much.
constexpr std::size_t mostMarks = 5'000;
/// In bytes. Behind so much text, a page stays without marks.
constexpr std::size_t mostMatchedText = std::size_t{8} << 20U;
/// In bytes: most pages whole, as the matcher looks for the parts of a name in a text without it.
constexpr std::size_t usualBatch = std::size_t{256} << 10U;
/// In bytes. A batch ends within a block that is longer; within a word, if it has twice as many.
constexpr std::size_t largestBatch = 4 * usualBatch;

/// Puts marks into a page.
class Marker {
 public:
  /// Appends the page to `out` from `begin` on.
  Marker(std::string_view page, std::size_t begin, const Matcher& matcher, std::string& out)
      : _page(page), _matcher(matcher), _out(out), _copied(begin) {}

  void run();

 private:
  void take(const HtmlToken& token, bool isWithinForeign);
  void takeTag(const HtmlToken& tag);
  void takeText(TextRange range);
  std::size_t endOfPart(TextRange text) const;
  void matchBatch();
  void mark(TextRange source);
  void copyUpTo(std::size_t position);
  bool isDone() const { return _marks >= mostMarks || _matchedText >= mostMatchedText; }

  std::string_view _page;
  const Matcher& _matcher;
  std::string& _out;
  std::size_t _copied;  ///< where what has been written of the page ends
  TextBatch _batch;
  std::string_view _hiddenName;  ///< of the outermost open element with hidden text
  std::size_t _hiddenDepth = 0;  ///< open elements of that name
  std::size_t _marks = 0;
  std::size_t _matchedText = 0;
};

void Marker::run() {
  HtmlTokens tokens(_page);
  for (HtmlToken token = tokens.next(); token.kind != HtmlToken::Kind::end && !isDone();
       token = tokens.next())
    take(token, tokens.isWithinForeign());
  matchBatch();
  copyUpTo(_page.size());
}

void Marker::take(const HtmlToken& token, bool isWithinForeign) {
  if (token.kind == HtmlToken::Kind::text) {
    if (_hiddenDepth == 0 && !isWithinForeign) takeText({token.begin, token.end});
  } else if (token.kind == HtmlToken::Kind::startTag || token.kind == HtmlToken::Kind::endTag) {
    takeTag(token);
  }
}

void Marker::takeTag(const HtmlToken& tag) {
  const bool isStart = tag.kind == HtmlToken::Kind::startTag;
  if (_hiddenDepth > 0) {
    if (!isSameName(tag.name, _hiddenName)) return;
    if (isStart) {
      ++_hiddenDepth;
    } else {
      --_hiddenDepth;
    }
  } else if (tag.element == HtmlElement::block) {
    _batch.endBlock();
    if (_batch.text().size() >= usualBatch) matchBatch();
  } else if (tag.element != HtmlElement::other) {
    _batch.appendBlank();
    if (tag.element != HtmlElement::hidden || !isStart) return;
    _hiddenName = tag.name;
    _hiddenDepth = 1;
  }
}

void Marker::takeText(TextRange range) {
  while (range.begin < range.end && !isDone()) {
    const std::size_t end = endOfPart(range);
    _batch.append(_page, {range.begin, end});
    range.begin = end;
    const std::size_t size = _batch.text().size();
    const bool isBetweenWords = range.begin < range.end || _batch.endsWithSpace();
    if (size >= 2 * largestBatch || (size >= largestBatch && isBetweenWords)) matchBatch();
  }
}

/// Long text is taken in parts, so that a batch can end between two words: before white space, or
/// at least not within a character or a reference.
std::size_t Marker::endOfPart(TextRange text) const {
  if (text.end - text.begin <= usualBatch) return text.end;
  const std::string_view window = _page.substr(0, std::min(text.end, text.begin + 2 * usualBatch));
  const auto first = window.begin() + static_cast<std::ptrdiff_t>(text.begin + usualBatch);
  auto found = std::find_if(first, window.end(), isHtmlSpace);
  if (found == window.end()) {
    found = std::find_if(first, window.end(), [](char byte) {
      return byte == '&' || static_cast<unsigned char>(byte) >= 0xC0U;
    });
  }
  return static_cast<std::size_t>(found - window.begin());
}

void Marker::matchBatch() {
  const std::string& text = _batch.text();
  _matchedText += text.size();
  TextBatch::Sources sources(_batch, _page);
  std::size_t last = 0;
  if (!text.empty()) {
    for (const TextRange match : _matcher(text)) {
      if (match.begin < last || match.end <= match.begin || match.end > text.size()) continue;
      last = match.end;
      for (const TextRange source : sources.of(match))
        mark(source);
    }
  }
  _batch.clear();
}

/// White space at the ends is left out: a line break behind the tag of preformatted text, which is
/// not displayed, would be if a mark stood before it.
void Marker::mark(TextRange source) {
  source.begin = std::max(source.begin, _copied);
  while (source.begin < source.end && isHtmlSpace(_page[source.begin]))
    ++source.begin;
  while (source.begin < source.end && isHtmlSpace(_page[source.end - 1]))
    --source.end;
  if (source.begin >= source.end || _marks >= mostMarks) return;
  copyUpTo(source.begin);
  _out += markBegin;
  copyUpTo(source.end);
  _out += markEnd;
  ++_marks;
}

void Marker::copyUpTo(std::size_t position) {
  _out += _page.substr(_copied, position - _copied);
  _copied = position;
}

bool isBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), isHtmlSpace);
}

/// Returns where the tags go: behind the start of the head, or of what is there of the beginnings
/// of a page. Before the doctype they would change how the page is laid out.
std::size_t placeOfTags(std::string_view page) {
  std::size_t place = 0;
  HtmlTokens tokens(page);
  for (;;) {
    const HtmlToken token = tokens.next();
    switch (token.kind) {
      case HtmlToken::Kind::comment:
        continue;
      case HtmlToken::Kind::text:
        if (!isBlank(page.substr(token.begin, token.end - token.begin))) return place;
        continue;
      case HtmlToken::Kind::doctype:
        place = token.end;
        continue;
      case HtmlToken::Kind::startTag:
        if (token.element == HtmlElement::head) return token.end;
        if (token.element != HtmlElement::html) return place;
        place = token.end;
        continue;
      default:
        return place;
    }
  }
}

}  // namespace

std::string pageForReading(std::string_view bytes, const Matcher& matcher) {
  constexpr std::size_t roomForMarks = std::size_t{4} << 10U;
  std::string converted;
  const std::string_view page = utf8Page(bytes, converted);
  const std::size_t place = placeOfTags(page);
  std::string sent;
  sent.reserve(page.size() + pageTags.size() + (matcher ? roomForMarks : 0));
  sent += page.substr(0, place);
  sent += pageTags;
  if (matcher) {
    Marker(page, place, matcher, sent).run();
  } else {
    sent += page.substr(place);
  }
  return sent;
}

}  // namespace quorvex::view
