#pragma once

#include <memory>

#include "extract/page_tree.h"

namespace quorvex {

/// Takes the place of the parser's tree builder, and of its `_private` field, until the tree takes
/// the document.
std::unique_ptr<PageTree> arenaPageTree(htmlParserCtxt* parser);

/// Gives back what the calling thread keeps for its next tree.
void releaseSpareArena();

}  // namespace quorvex
