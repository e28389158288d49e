#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

namespace quorvex {

/// An element of a page's body that may become a place: one with a fragment, a heading, a term of a
/// definition list, or the end of such a list. Texts are numbered as in PageQuery::bodyText.
struct PlaceMark {
  enum class Kind : std::uint8_t { fragment, heading, term, endOfList };

  Kind kind = Kind::fragment;
  std::uint8_t level = 0;     ///< of a heading, from 1; nesting of a definition list, from 1
  bool continues = false;     ///< a term that shares its definition with the one before it
  std::string_view fragment;  ///< into the tree; empty: none
  const xmlNode* element = nullptr;
  std::uint32_t firstText = 0;  ///< the first text that begins in the element or after it
  std::uint32_t endText = 0;    ///< behind the element's last text
};

/// Collects a page's marks, in document order, while another class walks over its body. Leaves out
/// furniture: what lies in navigation, page headers and page footers.
class PlaceMarks {
 public:
  /// `texts`: number of texts so far.
  void enter(const xmlNode* element, std::size_t texts);
  void leave(const xmlNode* element, std::size_t texts);

  bool isInFurniture() const { return _furniture != nullptr; }

  std::vector<PlaceMark> take() { return std::move(_marks); }

 private:
  struct Open {
    const xmlNode* element;
    std::size_t mark;
  };

  bool isInTerm(std::size_t texts);
  bool isFull() const;

  std::vector<PlaceMark> _marks;
  std::vector<Open> _open;              ///< headings, terms, definition lists and sections
  const xmlNode* _furniture = nullptr;  ///< the outermost open one
  unsigned _listLevel = 0;
  unsigned _contentLevel = 0;  ///< open elements whose headers belong to the content
};

}  // namespace quorvex
