#include "extract/places.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <unordered_set>
#include <utility>

#include "common/unicode.h"
#include "extract/defined_names.h"
#include "extract/page_limits.h"

namespace quorvex {

namespace {

/// A fragment with at most this many visible characters before a heading or a term leads to it.
constexpr std::size_t mostCharactersBetween = 25;
/// Fragments that are kept to see whether they lead to a heading.
constexpr std::size_t mostPending = 16;
/// What a fragment without a heading defines stands within this many bytes.
constexpr std::size_t textBehindFragment = 80;
/// What is read at most to make a line, in bytes, with blanks and marks that the line leaves out: a
/// page may have many places before one long run of them. Each text costs as much as some bytes.
constexpr std::size_t mostBytesRead = 4096;
constexpr std::size_t costOfText = 8;
/// Names of the terms of one definition; each is compared with all before it.
constexpr std::size_t mostNamesOfTerm = 500;

std::string_view contentOf(const NodeView& text) {
  const xmlChar* content = text.node()->content;
  return content != nullptr ? reinterpret_cast<const char*>(content) : std::string_view();
}

/// The beginning of a text, without asking for the size of the whole.
std::string_view beginningOf(const NodeView& text, std::size_t mostBytes) {
  const xmlChar* content = text.node()->content;
  if (content == nullptr) return {};
  const auto* begin = reinterpret_cast<const char*>(content);
  const std::size_t size = ::strnlen(begin, mostBytes + 1);
  return {begin, size <= mostBytes ? size : characterStart({begin, size}, mostBytes)};
}

/// The text of some nodes on one line, up to a number of bytes.
/// `separator`: stands for a line break, so that terms on lines of their own stay apart.
std::string lineOf(std::span<const NodeView> texts, std::size_t mostBytes,
                   std::string_view separator = {}) {
  std::string line;
  line.reserve(mostBytes + 1);
  const NodeView* previous = nullptr;
  std::size_t read = 0;
  for (const NodeView& text : texts) {
    if (read >= mostBytesRead) break;
    const std::string_view content = beginningOf(text, mostBytesRead - read);
    read += content.size() + costOfText;
    if (text.isPermalink()) continue;
    if (!separator.empty() && previous != nullptr && !line.empty() && !line.ends_with(separator) &&
        text.beginsLineAfter(*previous)) {
      while (line.ends_with(' '))
        line.pop_back();
      line += separator;
    }
    previous = &text;
    appendOnOneLine(content, line, mostBytes);
    if (line.size() > mostBytes) break;
  }
  if (line.size() > mostBytes) line.resize(characterStart(line, mostBytes));
  line = validUtf8(std::move(line));
  while (line.ends_with(' '))
    line.pop_back();
  return line;
}

class Maker {
 public:
  Maker(std::span<const PlaceMark> marks, std::span<const NodeView> texts, std::string_view title)
      : _marks(marks), _texts(texts) {
    appendOnOneLine(title, _title, largestHeading);
  }

  std::vector<TSPlace> make() {
    for (std::size_t i = 0; i < _marks.size(); ++i) {
      const PlaceMark& mark = _marks[i];
      // No fragment in a list leads to a heading behind it.
      const bool isEnd = mark.kind == PlaceMark::Kind::endOfList;
      flush(isEnd ? UINT32_MAX : mark.firstText);
      if (isEnd) {
        endList(mark);
      } else if (mark.kind == PlaceMark::Kind::fragment) {
        addPending(mark);
      } else {
        i = addText(i);
      }
    }
    flush(UINT32_MAX);
    return std::move(_places);
  }

 private:
  struct Fragment {
    std::string_view name;
    std::uint32_t text;
    const xmlNode* element = nullptr;
    std::uint32_t end = text;  ///< behind the last text that isNear() has counted
    std::size_t visible = 0;   ///< characters up to there
  };

  bool isFirst(std::string_view fragment) {
    return !fragment.empty() && isValidUtf8(fragment) && _seen.insert(fragment).second;
  }

  void addPending(const PlaceMark& mark) {
    if (!isFirst(mark.fragment)) return;
    _pending.push_back({.name = mark.fragment, .text = mark.firstText, .element = mark.element});
    if (_pending.size() <= mostPending) return;
    addFragment(_pending.front());
    _pending.erase(_pending.begin());
  }

  /// Whether a fragment leads to a heading or term at `text`. Counts each text once, since a page
  /// may have many places behind long blank ones.
  bool isNear(Fragment& fragment, std::uint32_t text) const {
    for (; fragment.end < std::min<std::size_t>(text, _texts.size()); ++fragment.end) {
      for (const char c : contentOf(_texts[fragment.end])) {
        const bool isBlank = c == ' ' || (c >= '\t' && c <= '\r');
        const bool continues = (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
        if (!isBlank && !continues && ++fragment.visible > mostCharactersBetween) return false;
      }
    }
    return true;
  }

  /// Whether a fragment belongs to a heading or a term and not to text of its own: nothing is seen
  /// between them, or it is that of an element around it.
  static bool leadsTo(const Fragment& fragment, const PlaceMark& mark) {
    if (fragment.visible == 0) return true;
    const xmlNode* around = mark.element->parent;
    while (around != nullptr && around != fragment.element)
      around = around->parent;
    return around != nullptr;
  }

  /// Adds the fragments that lead to no later heading or term at `text`.
  void flush(std::uint32_t text) {
    std::size_t done = 0;
    while (done < _pending.size() && (text == UINT32_MAX || !isNear(_pending[done], text)))
      addFragment(_pending[done++]);
    _pending.erase(_pending.begin(), _pending.begin() + static_cast<std::ptrdiff_t>(done));
  }

  void addFragment(const Fragment& fragment) {
    if (isNumbered(fragment.name)) return;
    TSPlace& place = _places.emplace_back();
    place.offset = fragment.text;
    place.fragment = fragment.name;
    const std::size_t begin = std::min<std::size_t>(fragment.text, _texts.size());
    const std::string line = lineOf(_texts.subspan(begin), textBehindFragment);
    const std::string_view name = nameOfFragment(line, fragment.name);
    if (!name.empty()) place.names.push_back({std::string(name), TSNameKind::heading});
  }

  /// Adds a heading or a term. Returns the number of the last mark in it.
  std::size_t addText(std::size_t number) {
    const PlaceMark& mark = _marks[number];
    const bool isTerm = mark.kind == PlaceMark::Kind::term;
    std::vector<std::string_view> fragments;
    if (isFirst(mark.fragment)) fragments.push_back(mark.fragment);
    std::size_t last = number;
    for (; last + 1 < _marks.size() && _marks[last + 1].kind == PlaceMark::Kind::fragment &&
           _marks[last + 1].firstText < mark.endText;
         ++last) {
      if (isFirst(_marks[last + 1].fragment)) fragments.push_back(_marks[last + 1].fragment);
    }
    for (std::size_t i = _pending.size(); i-- > 0;) {
      if (leadsTo(_pending[i], mark)) {
        fragments.push_back(_pending[i].name);
      } else {
        addFragment(_pending[i]);
      }
    }
    _pending.clear();
    std::string text = lineOf(_texts.subspan(mark.firstText, mark.endText - mark.firstText),
                              largestHeading, isTerm ? ", " : "");
    const unsigned level = isTerm ? deepestHeading + mark.level : mark.level;
    Definition definition =
        isTerm ? definitionOfTerm(text, fragments) : definitionOfHeading(text, fragments);
    if (mark.continues && joinTerm(definition)) return last;
    TSPlace& place = _places.emplace_back();
    place.offset = mark.firstText;
    place.fragment = definition.fragment;
    // The terms of one definition are places in it.
    if (!text.empty() && !mark.continues) place.level = level;
    if (isTerm) _term = mark.continues ? _term : _places.size() - 1;
    if (text.empty() || isHeadingOfPage(level, text)) return last;
    place.names = std::move(definition.names);
    const bool isDefinition =
        !place.names.empty() && (isTerm || place.names.front().kind == TSNameKind::definition);
    if (place.level > 0) {
      place.heading = isDefinition ? place.names.front().text : std::move(text);
    }
    return last;
  }

  /// The page's own heading says what its title says.
  bool isHeadingOfPage(unsigned level, std::string_view text) {
    if (level > deepestHeading || !std::exchange(_expectsPageHeading, false)) return false;
    return level == 1 || _title.starts_with(text);
  }

  /// Adds the names of a further term of a definition to those of the first. False when the term
  /// needs a place of its own: it has names and a fragment.
  bool joinTerm(Definition& definition) {
    if (_term >= _places.size()) return false;
    std::vector<TSName>& names = _places[_term].names;
    std::erase_if(definition.names, [&](const TSName& name) {
      return std::ranges::find(names, name.text, &TSName::text) != names.end();
    });
    if (!definition.names.empty() && !definition.fragment.empty()) return false;
    definition.names.resize(std::min(definition.names.size(), mostNamesOfTerm - names.size()));
    std::ranges::move(definition.names, std::back_inserter(names));
    return true;
  }

  void endList(const PlaceMark& mark) {
    TSPlace& end = _places.emplace_back();
    end.offset = mark.firstText;
    end.level = deepestHeading + mark.level;
  }

  std::span<const PlaceMark> _marks;
  std::span<const NodeView> _texts;
  std::string _title;
  std::vector<Fragment> _pending;
  std::unordered_set<std::string_view> _seen;
  bool _expectsPageHeading = true;
  std::size_t _term = SIZE_MAX;  ///< number of the first term of the current definition
  std::vector<TSPlace> _places;
};

}  // namespace

std::vector<TSPlace> placesOf(std::span<const PlaceMark> marks, std::span<const NodeView> texts,
                              std::string_view title) {
  return Maker(marks, texts, title).make();
}

}  // namespace quorvex
