#pragma once

#include <memory>

#include "extract/page_tree.h"

namespace quorvex {

/// Replaces the parser's tree builder, and uses its `_private` field, until the tree takes the
/// document.
std::unique_ptr<PageTree> arenaPageTree(htmlParserCtxt* parser);

}  // namespace quorvex
