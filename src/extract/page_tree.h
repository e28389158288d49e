#pragma once

#include <memory>

#include <libxml/HTMLparser.h>

namespace quorvex {

/// How a page's tree is built.
enum class PageTreeKind {
  /// By libxml2's parser, node by node.
  plain,
  /// In memory that is freed as a whole: a page has tens of thousands of small pieces, and
  /// allocating and freeing each is a third of the cost of parsing it. Has only what is read of a
  /// page (read_attributes.h). Depends on the parser's internals, so by default only builds with a
  /// tested libxml2 include it.
  arena,
};

/// Returns arena if this build has it, else plain, which is always there.
PageTreeKind usualPageTree();

/// The tree of one page, with libxml2's own node types.
///
/// Elements, attributes, texts, comments and processing instructions belong to the tree and must
/// not be unlinked, changed or freed. In an arena's tree, comments and processing instructions have
/// no content, elements only the attributes that are read, and nodes no namespace declarations and
/// lines: those fields may be outside the node, so only libxml2's functions for properties and
/// strings may be used on it. A plain tree is whole.
class PageTree {
 public:
  /// Call this before the parser builds the tree; the parser must live until take().
  static std::unique_ptr<PageTree> create(PageTreeKind kind, htmlParserCtxt* parser);
  PageTree() = default;
  PageTree(const PageTree&) = delete;
  PageTree& operator=(const PageTree&) = delete;
  virtual ~PageTree() = default;

  /// Takes the document after the parser has ended.
  void take(htmlParserCtxt* parser);
  /// Null when the parser made none.
  xmlDoc* document() const { return _document; }

  /// Frees the memory that the calling thread may keep from one tree for the next.
  static void releaseSpareMemory();

 protected:
  xmlDoc* _document = nullptr;
};

}  // namespace quorvex
