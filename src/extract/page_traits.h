#pragma once

#include <cstdint>

#include <libxml/tree.h>

#include "platform/textsift.h"

namespace quorvex {

/// Measures the texts of a page's body: their bytes other than white space and control characters.
class PageTraits {
 public:
  /// `isLink`: in a link, navigation, a page header or footer; `isCode`: in preformatted text.
  void add(const xmlNode* text, bool isLink, bool isCode);
  TSPageTraits take(const xmlDoc* document) const;

 private:
  std::uint64_t _all = 0;
  std::uint64_t _links = 0;
  std::uint64_t _code = 0;
};

}  // namespace quorvex
