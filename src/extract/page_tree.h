#pragma once

#include <memory>

#include <libxml/HTMLparser.h>

namespace quorvex {

/// How the tree of a page is made.
enum class PageTreeKind {
  /// By libxml2's parser, node by node.
  plain,
  /// In memory that is given back as a whole: a page is tens of thousands of small pieces, and
  /// taking and giving back each of them is a third of the cost of parsing it. Knows the parser
  /// from inside, so builds with a libxml2 for which it was not tried are without it.
  arena,
};

/// The kind that this build uses: the arena where it has it. It has the plain one always.
PageTreeKind usualPageTree();

/// The tree of one page, of libxml2's own node types and the same whatever its kind.
///
/// Elements, attributes, texts, comments and processing instructions belong to the tree and must
/// not be unlinked, changed or freed. Identifiers may not be registered, so XPath's id() may find
/// nothing.
class PageTree {
 public:
  /// Made before the parser runs, which builds it; the tree needs the parser until take().
  static std::unique_ptr<PageTree> create(PageTreeKind kind, htmlParserCtxt* parser);
  PageTree() = default;
  PageTree(const PageTree&) = delete;
  PageTree& operator=(const PageTree&) = delete;
  virtual ~PageTree() = default;

  /// The parser has ended: its document is the tree's now.
  void take(htmlParserCtxt* parser);
  /// Null when the parser made none.
  xmlDoc* document() const { return _document; }

  /// A thread may keep the memory of one tree for the next. Gives back what the calling one keeps.
  static void releaseSpareMemory();

 protected:
  xmlDoc* _document = nullptr;
};

}  // namespace quorvex
