#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <libxml/tree.h>

#include "platform/textsift.h"

namespace quorvex {

/// What a walk over a page tells about its text. Sizes are of visible bytes: those other than white
/// space and control characters.
struct PageTraits {
  std::uint64_t furnitureSize = 0;  ///< in navigation, page headers and footers
  // Elsewhere:
  std::uint64_t linkSize = 0;  ///< in links
  std::uint64_t codeSize = 0;  ///< in preformatted text
  std::string language;        ///< that the page states; empty or an isLanguageTag()

  /// Adds a text of the body.
  void add(const xmlNode* text, bool isFurniture, bool isLink, bool isCode);
};

/// Returns the language that the html element states; `lang` counts before `xml:lang`.
std::string statedLanguage(const xmlDoc* document);

/// Puts the sizes in relation to the whole text of the body.
TSPageTraits sharesOf(const PageTraits& traits, std::string_view content);

}  // namespace quorvex
