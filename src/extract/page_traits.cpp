#include "extract/page_traits.h"

#include <cstring>
#include <string>
#include <string_view>

#include "common/locale.h"

namespace quorvex {

namespace {

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

std::uint8_t share(std::uint64_t part, std::uint64_t all) {
  return all == 0 ? 0 : static_cast<std::uint8_t>((part * UINT8_MAX + all / 2) / all);
}

/// Counts the bytes above the space, eight at a time: this is done for each text of a book.
std::uint64_t visibleBytes(std::string_view text) {
  constexpr std::uint64_t ones = 0x0101'0101'0101'0101;
  std::uint64_t count = 0;
  for (; text.size() >= sizeof ones; text.remove_prefix(sizeof ones)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data(), sizeof bytes);
    // The sum has the highest bit of each ASCII byte that is visible, the byte itself that of
    // others.
    const std::uint64_t sums = (bytes & (0x7F * ones)) + (0x7F - ' ') * ones;
    count += ((((sums | bytes) >> 7U) & ones) * ones) >> 56U;
  }
  for (const char c : text)
    count += static_cast<unsigned char>(c) > ' ' ? 1U : 0U;
  return count;
}

/// The language that the html element states; `lang` counts before `xml:lang`.
std::string languageOf(const xmlDoc* document) {
  const xmlNode* root = document->children;
  while (root != nullptr && (root->type != XML_ELEMENT_NODE || view(root->name) != "html"))
    root = root->next;
  std::string_view language;
  const xmlAttr* attribute = root == nullptr ? nullptr : root->properties;
  for (; attribute != nullptr; attribute = attribute->next) {
    const std::string_view name = view(attribute->name);
    const xmlNode* value = attribute->children;
    if (value == nullptr || value->next != nullptr || value->type != XML_TEXT_NODE) continue;
    if (name == "lang" || (name == "xml:lang" && language.empty())) language = view(value->content);
  }
  return std::string(isLanguageTag(language) ? language : std::string_view());
}

}  // namespace

void PageTraits::add(const xmlNode* text, bool isLink, bool isCode) {
  // Texts of other types, such as scripts, are not indexed.
  if (text->type != XML_TEXT_NODE || text->content == nullptr) return;
  const std::uint64_t count = visibleBytes(view(text->content));
  _all += count;
  if (isLink) _links += count;
  if (isCode) _code += count;
}

TSPageTraits PageTraits::take(const xmlDoc* document) const {
  return {.linkShare = share(_links, _all),
          .codeShare = share(_code, _all),
          .language = languageOf(document)};
}

}  // namespace quorvex
