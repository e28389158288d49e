#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/value.h"

namespace quorvex::reader {

/// The text of a page as it was indexed, or of a part of it.
struct PageText {
  std::string text;
  std::vector<std::size_t> blocks;  ///< where blocks begin, ascending
  std::size_t bodyBegin = 0;        ///< before it stand description and keywords, which nobody sees
};

/// Parses a page as for an index. Empty for one that cannot be parsed within the limits.
PageText textOfPage(const Data& html);

/// Parses only so many bytes of a page.
PageText beginningOfPage(const Data& html, std::size_t size);

/// Parses only the part of a page that begins with a fragment's element and has about this many
/// bytes: the rest of the page costs nothing but a search for the fragment. Empty if it is not
/// found.
PageText textFromFragment(const Data& html, std::string_view fragment, std::size_t size);

}  // namespace quorvex::reader
