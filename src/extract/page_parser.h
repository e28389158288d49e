#pragma once

#include <memory>
#include <string>

#include "common/value.h"
#include "extract/page_limits.h"
#include "extract/page_tree.h"

namespace quorvex {

struct ParsedPage {
  /// Null when there is no tree.
  std::unique_ptr<const PageTree> tree;
  /// The limit that the page exceeded; then there is no tree.
  std::string trouble;

  xmlDoc* document() const { return tree == nullptr ? nullptr : tree->document(); }
};

/// Initialises libxml2, once. Call this before any use, even before setting error handlers:
/// otherwise libxml2 initialises itself, which is not thread-safe.
void initializePageParser();

/// Parses a page into the same tree as htmlReadMemory with HTML_PARSE_NOERROR |
/// HTML_PARSE_NOWARNING, but gives up on a page that exceeds the limits; an arena tree lacks what
/// is not read. Gives the bytes back as soon as the parser has its own copy. Thread-safe. The
/// thread's libxml2 error handlers must be silent (QuietXmlErrors).
ParsedPage parsePage(Data html, const PageLimits& limits = {}, PageTreeKind kind = usualPageTree());

}  // namespace quorvex
