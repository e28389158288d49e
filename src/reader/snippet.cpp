#include "reader/snippet.h"

#include <algorithm>
#include <string_view>

#include "common/unicode.h"
#include "extract/index_settings.h"

namespace quorvex::reader {

namespace {

// In characters.
constexpr std::size_t wantedLength = 160;
constexpr std::size_t longestLength = 190;
constexpr std::size_t shortestLength = 100;
/// Before the first match, unless a sentence begins nearer.
constexpr std::size_t mostBefore = 60;

/// Bytes of marks that touch a word, such as parentheses; more is a line of them.
constexpr std::size_t mostMarks = 12;

constexpr std::string_view ellipsis = "\u2026";

bool endsSentence(char32_t character) {
  return character == '.' || character == '!' || character == '?' || character == U'\u2026' ||
         character == U'\u3002' || character == U'\uFF01' || character == U'\uFF1F' ||
         character == U'\u0964';
}

/// Whether a mark stands close to its word without white space in scripts that use none.
bool needsNoBlank(char32_t sentenceEnd) {
  return sentenceEnd >= 0x3000;
}

class Cutter {
 public:
  Cutter(const PageText& page, const std::vector<TSTextRange>& words)
      : _page(page), _words(words) {}

  std::string cut(std::size_t first, std::size_t last) {
    _first = first;
    _last = first;
    // All matches, if they fit.
    while (_last < last && length(_first, _last + 1) <= wantedLength)
      ++_last;
    extendBack(mostBefore);
    extendForward();
    // What the end of the text left over.
    if (length(_first, _last) < shortestLength) extendBack(wantedLength);
    return text();
  }

 private:
  std::string_view bytes(std::size_t begin, std::size_t end) const {
    return std::string_view(_page.text).substr(begin, end - begin);
  }

  std::size_t length(std::size_t first, std::size_t last) const {
    return characterCount(bytes(_words[first].begin, _words[last].end));
  }

  /// Whether a sentence or a block begins with a word.
  bool begins(std::size_t word) const {
    if (word == 0) return _words[0].begin == 0;
    const std::size_t before = _words[word - 1].end;
    const std::size_t begin = _words[word].begin;
    const auto block = std::ranges::upper_bound(_page.blocks, before);
    if (block != _page.blocks.end() && *block <= begin) return true;
    const std::string_view between = bytes(before, begin);
    for (std::size_t position = 0; position < between.size();) {
      const char32_t character = nextCharacter(between, position);
      if (!endsSentence(character)) continue;
      if (needsNoBlank(character)) return true;
      while (position < between.size() && between[position] == textJoint)
        ++position;
      std::size_t next = position;
      if (next < between.size() && isWhitespaceOrNewline(nextCharacter(between, next))) return true;
    }
    return false;
  }

  void extendBack(std::size_t most) {
    const std::size_t anchor = _first;
    while (_first > 0 && !begins(_first) && length(_first - 1, anchor) <= most &&
           length(_first - 1, _last) <= wantedLength)
      --_first;
  }

  void extendForward() {
    while (_last + 1 < _words.size()) {
      const std::size_t longer = length(_first, _last + 1);
      if (longer > longestLength) break;
      const std::size_t now = length(_first, _last);
      if (now >= shortestLength && begins(_last + 1)) return;
      if (longer > wantedLength && !endsSoon()) break;
      ++_last;
    }
  }

  /// Whether the sentence ends within the longest length.
  bool endsSoon() const {
    for (std::size_t word = _last + 1; word < _words.size(); ++word) {
      if (begins(word)) return true;
      if (length(_first, word) > longestLength) return false;
    }
    return false;
  }

  /// With the marks that touch the first and the last word.
  std::string text() const {
    std::size_t begin = _words[_first].begin;
    const std::size_t before = _first == 0 ? 0 : _words[_first - 1].end;
    const std::string_view lead = bytes(before, begin);
    if (const std::size_t blank = lead.find_last_of(" \t\r\n"); blank != lead.npos) {
      begin = before + blank + 1;
    } else if (_first == 0) {
      begin = before;
    }
    if (_words[_first].begin - begin > mostMarks) begin = _words[_first].begin;
    std::size_t end = _words[_last].end;
    const std::size_t after =
        _last + 1 < _words.size() ? _words[_last + 1].begin : _page.text.size();
    const std::string_view trail = bytes(end, after);
    const std::size_t blank = trail.find_first_of(" \t\r\n");
    const std::size_t marks = blank != trail.npos          ? blank
                              : after == _page.text.size() ? trail.size()
                                                           : 0;
    if (marks <= mostMarks) end += marks;
    const bool isCutBefore = _first > 0 && !begins(_first);
    const bool isCutAfter = _last + 1 < _words.size() && !begins(_last + 1);
    std::string snippet(isCutBefore ? ellipsis : std::string_view());
    appendOnOneLine(withoutJoints(begin, end), snippet);
    if (snippet.ends_with(' ')) snippet.pop_back();
    if (isCutAfter) snippet += ellipsis;
    return validUtf8(std::move(snippet));
  }

  /// Between two texts nothing is shown but the border of a block.
  std::string withoutJoints(std::size_t begin, std::size_t end) const {
    std::string shown;
    for (std::size_t at = begin; at < end; ++at) {
      const bool isJoint = _page.text[at] == textJoint;
      const bool isBorder = isJoint && std::ranges::binary_search(_page.blocks, at + 1);
      if (!isJoint || isBorder) shown += isJoint ? ' ' : _page.text[at];
    }
    return shown;
  }

  const PageText& _page;
  const std::vector<TSTextRange>& _words;
  std::size_t _first = 0;
  std::size_t _last = 0;
};

}  // namespace

std::string snippetOf(const PageText& page, const TSLocatedWords& located) {
  if (located.words.empty()) return {};
  return Cutter(page, located.words).cut(located.first, located.last);
}

}  // namespace quorvex::reader
