#include "extract/read_attributes.h"

#include <algorithm>

namespace quorvex {

namespace {

/// Each marks a link as one for the help system.
constexpr std::string_view helpLinkMarks[] = {
    "help:", "x-help-script:", "x-corvane-helpbasic:", "x-help-action"};
/// Few links have what all marks have in common.
constexpr std::string_view partOfMarks = "help";
static_assert(std::ranges::all_of(helpLinkMarks, [](std::string_view mark) {
  return mark.find(partOfMarks) != std::string_view::npos;
}));

std::string_view view(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

}  // namespace

bool isReadAttribute(const xmlChar* element, const xmlChar* attribute) {
  const std::string_view name = view(attribute);
  switch (name[0]) {
    case 'c':
      return name == "content" && view(element) == "meta";
    case 'h':
      return name == "href" && view(element) == "a";
    case 'i':
      return name == "id";
    case 'l':
      return name == "lang" && view(element) == "html";
    case 'n':
      return name == "name" && (view(element) == "a" || view(element) == "meta");
    case 'r':
      return name == "role";
    case 'x':
      return name == "xml:lang" && view(element) == "html";
    default:
      return false;
  }
}

bool isHelpLink(std::string_view target) {
  const std::size_t part = target.find(partOfMarks);
  return part != std::string_view::npos &&
         std::ranges::any_of(helpLinkMarks, [target](std::string_view mark) {
           return target.find(mark) != std::string_view::npos;
         });
}

}  // namespace quorvex
