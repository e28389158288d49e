#include "extract/place_marks.h"

#include <algorithm>
#include <array>

#include "extract/page_limits.h"

namespace quorvex {

namespace {

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

enum class Role : std::uint8_t { none, anchor, heading, term, list, header, section, furniture };

/// Most names are decided by their first letters, which saves measuring them.
Role roleOf(const xmlChar* name) {
  const auto isWhole = [&](std::string_view wanted) { return view(name) == wanted; };
  if (name == nullptr) return Role::none;
  switch (name[0]) {
    case 'a':
      if (name[1] == '\0') return Role::anchor;
      return name[1] == 'r' && isWhole("article") ? Role::section : Role::none;
    case 'd':
      if (name[1] == '\0' || name[2] != '\0') return Role::none;
      return name[1] == 't' ? Role::term : name[1] == 'l' ? Role::list : Role::none;
    case 'f':
      return isWhole("footer") ? Role::furniture : Role::none;
    case 'h':
      if (name[1] >= '1' && name[1] <= '6' && name[2] == '\0') return Role::heading;
      return isWhole("header") ? Role::header : Role::none;
    case 'm':
      return isWhole("main") ? Role::section : Role::none;
    case 'n':
      return isWhole("nav") ? Role::furniture : Role::none;
    case 's':
      return name[1] == 'e' && isWhole("section") ? Role::section : Role::none;
    default:
      return Role::none;
  }
}

/// The landmarks of WAI-ARIA that surround the content of a page.
bool isFurnitureRole(std::string_view role) {
  static constexpr auto names = std::to_array<std::string_view>(
      {"banner", "contentinfo", "menu", "menubar", "navigation", "search", "toolbar"});
  return !role.empty() && std::ranges::find(names, role) != names.end();
}

std::string_view valueOf(const xmlAttr* attribute) {
  const xmlNode* child = attribute->children;
  const bool isWhole = child != nullptr && child->next == nullptr && child->type == XML_TEXT_NODE;
  return isWhole ? view(child->content) : std::string_view();
}

struct Attributes {
  std::string_view fragment;
  std::string_view role;
};

Attributes attributesOf(const xmlNode* element, bool isAnchor) {
  Attributes found;
  for (const xmlAttr* attribute = element->properties; attribute != nullptr;
       attribute = attribute->next) {
    const xmlChar* name = attribute->name;
    if (name == nullptr) continue;
    const bool isName =
        isAnchor && name[0] == 'n' && found.fragment.empty() && view(name) == "name";
    if (isName || (name[0] == 'i' && view(name) == "id")) {
      found.fragment = valueOf(attribute);
    } else if (name[0] == 'r' && view(name) == "role") {
      found.role = valueOf(attribute);
    }
  }
  if (found.fragment.size() > largestFragment) found.fragment = {};
  return found;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n\f") == text.npos;
}

bool hasLetters(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) > 127;
  });
}

/// What is found in an element that may be a mere link, of which only so many nodes are looked at.
struct LinkSearch {
  unsigned nodesLeft = 32;
  bool hasLink = false;
};

/// Whether nothing but links and numbers is in a node, and no fragment leads into it.
bool hasOnlyLinks(const xmlNode* node, LinkSearch& search) {
  if (search.nodesLeft == 0) return false;
  --search.nodesLeft;
  if (node->type == XML_TEXT_NODE) return !hasLetters(view(node->content));
  if (node->type != XML_ELEMENT_NODE) return true;
  const bool isAnchor = roleOf(node->name) == Role::anchor;
  if (!attributesOf(node, isAnchor).fragment.empty()) return false;
  if (isAnchor && ::xmlHasProp(node, reinterpret_cast<const xmlChar*>("href")) != nullptr) {
    search.hasLink = true;
    return true;
  }
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (!hasOnlyLinks(child, search)) return false;
  }
  return true;
}

bool isMereLink(const xmlNode* element) {
  LinkSearch search;
  return hasOnlyLinks(element, search) && search.hasLink;
}

const xmlNode* skipBlanks(const xmlNode* node) {
  while (node != nullptr && (node->type == XML_COMMENT_NODE ||
                             (node->type == XML_TEXT_NODE && isBlank(view(node->content)))))
    node = node->next;
  return node;
}

/// Whether a term has a definition, and not only a list below it.
bool isDescribed(const xmlNode* term) {
  const xmlNode* next = skipBlanks(term->next);
  if (next == nullptr || view(next->name) != "dd") return false;
  const xmlNode* first = skipBlanks(next->children);
  return first != nullptr && roleOf(first->name) != Role::list;
}

/// A line of a table of contents.
bool isEntryOfContents(const xmlNode* term) {
  return !isDescribed(term) && isMereLink(term);
}

bool followsTerm(const xmlNode* term) {
  const xmlNode* before = term->prev;
  while (before != nullptr && before->type != XML_ELEMENT_NODE)
    before = before->prev;
  return before != nullptr && roleOf(before->name) == Role::term && !isEntryOfContents(before);
}

}  // namespace

void PlaceMarks::enter(const xmlNode* element, std::size_t texts) {
  if (_furniture != nullptr) return;
  const Role role = roleOf(element->name);
  if (role == Role::none && element->properties == nullptr) return;
  const Attributes attributes = attributesOf(element, role == Role::anchor);
  if (role == Role::furniture || isFurnitureRole(attributes.role) ||
      (role == Role::header && _contentLevel == 0)) {
    _furniture = element;
    return;
  }
  if (role == Role::term && isEntryOfContents(element)) return;
  const bool isText = role == Role::heading || role == Role::term;
  const bool staysOpen = isText || role == Role::list || role == Role::section;
  if (attributes.fragment.empty() && !staysOpen) return;
  if (staysOpen) _open.push_back({element, _marks.size()});
  if (role == Role::section) ++_contentLevel;
  if (role == Role::list) ++_listLevel;
  if (isFull() || (attributes.fragment.empty() && !isText)) return;
  PlaceMark& mark = _marks.emplace_back();
  mark.fragment = attributes.fragment;
  mark.element = element;
  mark.firstText = mark.endText = static_cast<std::uint32_t>(texts);
  if (role == Role::heading) {
    mark.kind = PlaceMark::Kind::heading;
    mark.level = static_cast<std::uint8_t>(element->name[1] - '0');
  } else if (role == Role::term) {
    mark.kind = PlaceMark::Kind::term;
    mark.level = static_cast<std::uint8_t>(std::clamp(_listLevel, 1U, deepestListLevel));
    mark.continues = followsTerm(element) || isInTerm(texts);
  }
}

/// Whether a term begins in an open one, as the parser has it where end tags are left out. Ends the
/// text of the open one.
bool PlaceMarks::isInTerm(std::size_t texts) {
  for (auto open = _open.rbegin() + 1; open != _open.rend(); ++open) {
    const Role role = roleOf(open->element->name);
    if (role == Role::list) return false;
    if (role != Role::term) continue;
    if (open->mark >= _marks.size()) return false;
    PlaceMark& outer = _marks[open->mark];
    const bool isOpen = outer.endText == outer.firstText;
    if (isOpen) outer.endText = static_cast<std::uint32_t>(texts);
    return isOpen;
  }
  return false;
}

void PlaceMarks::leave(const xmlNode* element, std::size_t texts) {
  if (_furniture != nullptr) {
    if (element == _furniture) _furniture = nullptr;
    return;
  }
  if (_open.empty() || _open.back().element != element) return;
  const std::size_t number = _open.back().mark;
  _open.pop_back();
  const Role role = roleOf(element->name);
  if (role == Role::section) {
    --_contentLevel;
  } else if (role == Role::list) {
    if (!isFull()) {
      _marks.push_back({.kind = PlaceMark::Kind::endOfList,
                        .level = static_cast<std::uint8_t>(std::min(_listLevel, deepestListLevel)),
                        .fragment = {},
                        .firstText = static_cast<std::uint32_t>(texts),
                        .endText = static_cast<std::uint32_t>(texts)});
    }
    --_listLevel;
  } else if (number < _marks.size() && _marks[number].endText == _marks[number].firstText) {
    _marks[number].endText = static_cast<std::uint32_t>(texts);
  }
}

bool PlaceMarks::isFull() const {
  return _marks.size() >= mostPlaces;
}

}  // namespace quorvex
