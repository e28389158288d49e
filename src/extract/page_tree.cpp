#include "extract/page_tree.h"

#include <utility>

#ifdef QUORVEX_HAS_ARENA_PAGE_TREE
#include "extract/arena_page_tree.h"
#include "extract/page_arena.h"
#endif

namespace quorvex {
namespace {

class PlainPageTree final : public PageTree {
 public:
  ~PlainPageTree() override { xmlFreeDoc(_document); }
};

}  // namespace

void PageTree::take(htmlParserCtxt* parser) {
  _document = std::exchange(parser->myDoc, nullptr);
}

#ifdef QUORVEX_HAS_ARENA_PAGE_TREE
PageTreeKind usualPageTree() {
  return PageTreeKind::arena;
}

std::unique_ptr<PageTree> PageTree::create(PageTreeKind kind, htmlParserCtxt* parser) {
  if (kind == PageTreeKind::arena) return arenaPageTree(parser);
  return std::make_unique<PlainPageTree>();
}

void PageTree::releaseSpareMemory() {
  releaseSpareArena();
}
#else
PageTreeKind usualPageTree() {
  return PageTreeKind::plain;
}

std::unique_ptr<PageTree> PageTree::create(PageTreeKind /*kind*/, htmlParserCtxt* /*parser*/) {
  return std::make_unique<PlainPageTree>();
}

void PageTree::releaseSpareMemory() {}
#endif

}  // namespace quorvex
