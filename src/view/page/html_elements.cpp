#include "view/page/html_elements.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex::view {

namespace {

struct Entry {
  std::string_view name;
  HtmlElement element;
};

using enum HtmlElement;

constexpr auto entries = std::to_array<Entry>({
    {"address", block},    {"article", block},    {"aside", block},
    {"audio", hidden},     {"blockquote", block}, {"body", block},
    {"br", blank},         {"button", hidden},    {"canvas", hidden},
    {"caption", block},    {"center", block},     {"datalist", hidden},
    {"dd", block},         {"details", block},    {"dialog", block},
    {"dir", block},        {"div", block},        {"dl", block},
    {"dt", block},         {"fieldset", block},   {"figcaption", block},
    {"figure", block},     {"footer", block},     {"foreignobject", htmlInside},
    {"form", block},       {"frameset", block},   {"h1", block},
    {"h2", block},         {"h3", block},         {"h4", block},
    {"h5", block},         {"h6", block},         {"head", head},
    {"header", block},     {"hgroup", block},     {"hr", block},
    {"html", html},        {"iframe", rawText},   {"img", blank},
    {"input", blank},      {"legend", block},     {"li", block},
    {"listing", block},    {"main", block},       {"math", foreign},
    {"menu", block},       {"meta", meta},        {"nav", block},
    {"noembed", rawText},  {"noframes", rawText}, {"noscript", rawText},
    {"object", hidden},    {"ol", block},         {"optgroup", block},
    {"option", block},     {"p", block},          {"plaintext", plainText},
    {"pre", block},        {"script", script},    {"search", block},
    {"section", block},    {"select", hidden},    {"style", rawText},
    {"summary", block},    {"svg", foreign},      {"table", block},
    {"tbody", block},      {"td", block},         {"template", hidden},
    {"textarea", rawText}, {"tfoot", block},      {"th", block},
    {"thead", block},      {"title", rawText},    {"tr", block},
    {"ul", block},         {"video", hidden},     {"xmp", rawText},
});

constexpr bool isBefore(const Entry& entry, const Entry& other) {
  return entry.name < other.name;
}
static_assert(std::is_sorted(entries.begin(), entries.end(), isBefore));

constexpr std::size_t longestName =
    std::max_element(entries.begin(), entries.end(), [](const Entry& entry, const Entry& other) {
      return entry.name.size() < other.name.size();
    })->name.size();

/// For each letter, the number of names that begin with a smaller one: asked for every tag, so few
/// names are compared.
constexpr auto entriesBefore = []() {
  std::array<std::uint8_t, 27> before{};
  for (const Entry& entry : entries) {
    for (auto letter = static_cast<std::size_t>(entry.name.front() - 'a') + 1;
         letter < before.size(); ++letter)
      ++before[letter];
  }
  return before;
}();

char lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

}  // namespace

HtmlElement htmlElement(std::string_view name) {
  if (name.empty() || name.size() > longestName) return other;
  std::array<char, longestName> lowered{};
  std::transform(name.begin(), name.end(), lowered.begin(), lower);
  const std::string_view wanted(lowered.data(), name.size());
  if (wanted.front() < 'a' || wanted.front() > 'z') return other;
  const auto letter = static_cast<std::size_t>(wanted.front() - 'a');
  for (std::size_t i = entriesBefore[letter]; i < entriesBefore[letter + 1]; ++i) {
    if (entries[i].name == wanted) return entries[i].element;
  }
  return other;
}

bool isSameName(std::string_view name, std::string_view other) {
  return std::equal(name.begin(), name.end(), other.begin(), other.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace quorvex::view
