#include "extract/page_traits.h"

#include <algorithm>
#include <cstring>

#include "common/locale.h"

namespace quorvex {

namespace {

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

std::uint8_t share(std::uint64_t part, std::uint64_t all) {
  // Replacing ill-formed UTF-8 may change the size of the whole text.
  part = std::min(part, all);
  if (all == 0) return 0;
  return static_cast<std::uint8_t>((part * UINT8_MAX + all / 2) / all);
}

/// Counts the bytes above the space, eight at a time: it is done for all texts of a book.
std::uint64_t visibleSize(std::string_view text) {
  constexpr std::uint64_t ones = 0x0101'0101'0101'0101;
  std::uint64_t count = 0;
  for (; text.size() >= sizeof ones; text.remove_prefix(sizeof ones)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data(), sizeof bytes);
    // The highest bit is set in the sum for visible ASCII, in the byte itself for all else.
    const std::uint64_t sums = (bytes & (0x7F * ones)) + (0x7F - ' ') * ones;
    count += ((((sums | bytes) >> 7U) & ones) * ones) >> 56U;
  }
  for (const char c : text)
    count += static_cast<unsigned char>(c) > ' ' ? 1U : 0U;
  return count;
}

}  // namespace

std::string statedLanguage(const xmlDoc* document) {
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

void PageTraits::add(const xmlNode* text, bool isFurniture, bool isLink, bool isCode) {
  // Texts of other types, such as scripts, are not indexed.
  if ((!isFurniture && !isLink && !isCode) || text->type != XML_TEXT_NODE) return;
  const std::uint64_t size = visibleSize(view(text->content));
  if (isFurniture) {
    furnitureSize += size;
    return;
  }
  if (isLink) linkSize += size;
  if (isCode) codeSize += size;
}

TSPageTraits sharesOf(const PageTraits& traits, std::string_view content) {
  const std::uint64_t whole = visibleSize(content);
  const std::uint64_t all = whole - std::min(whole, traits.furnitureSize);
  return {.linkShare = share(traits.linkSize, all),
          .codeShare = share(traits.codeSize, all),
          .language = traits.language};
}

}  // namespace quorvex
