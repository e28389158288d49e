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
  /// The limit that the page passed; then there is no tree.
  std::string trouble;

  xmlDoc* document() const { return tree == nullptr ? nullptr : tree->document(); }
};

/// Makes libxml2 ready, once. To be called before a thread touches it, be it only to set its error
/// handlers: otherwise it makes itself ready, which two threads must not do at the same time.
void initializePageParser();

/// Parses a page as htmlReadMemory does with HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING, into the
/// same tree, but gives up a page that goes beyond the limits. Safe from several threads. The
/// thread's libxml2 error handlers are to be silent (QuietXmlErrors).
ParsedPage parsePage(const Data& html, const PageLimits& limits = {},
                     PageTreeKind kind = usualPageTree());

}  // namespace quorvex
