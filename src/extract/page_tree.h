#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string_view>

#include <libxml/HTMLparser.h>
#include <libxml/tree.h>

namespace quorvex {

/// The tree of one page, of libxml2's own node types and the same that its parser would make, in
/// memory that is given back as a whole: a page is tens of thousands of small pieces, and taking
/// and giving back each of them is a third of the cost of parsing it.
///
/// Elements, attributes, texts, comments and processing instructions belong to the tree and must
/// not be unlinked, changed or freed. Identifiers are not registered, so XPath's id() finds
/// nothing.
class PageTree {
 public:
  struct Unmap {
    void operator()(void* piece) const;
  };
  using Piece = std::unique_ptr<void, Unmap>;

  /// Takes the place of the parser's tree builder, and of its `_private` field, until take().
  explicit PageTree(htmlParserCtxt* parser);
  ~PageTree();
  PageTree(const PageTree&) = delete;
  PageTree& operator=(const PageTree&) = delete;

  /// The parser has ended: its document is the tree's now.
  void take(htmlParserCtxt* parser);
  /// Null when the parser made none.
  xmlDoc* document() const { return _document; }

  /// A thread keeps the memory of one tree for the next. Gives back what the calling one keeps.
  static void releaseSpareMemory();

  /// The parser's event; for those who want to hear of it first.
  static void startElement(void* parser, const xmlChar* name, const xmlChar** attributes);

 private:
  void freeDocument();
  static PageTree& of(void* parser);
  static void characters(void* parser, const xmlChar* text, int length);
  static void cdataBlock(void* parser, const xmlChar* text, int length);
  static void comment(void* parser, const xmlChar* text);
  static void processingInstruction(void* parser, const xmlChar* target, const xmlChar* data);

  template <typename Node>
  Node* make(xmlElementType type, const xmlChar* name, xmlDoc* document);
  xmlChar* copy(std::string_view text);
  xmlChar* copy(std::string_view text, std::size_t room);
  xmlChar* copy(const xmlChar* text);
  const xmlChar* keep(const xmlChar* name);
  const xmlChar* elementName(htmlParserCtxt* parser, const xmlChar* name);
  xmlAttr* makeAttribute(xmlDoc* document, const xmlChar* name, const xmlChar* value);
  void addText(htmlParserCtxt* parser, xmlElementType type, std::string_view text);

  Piece _firstPiece;
  std::pmr::monotonic_buffer_resource _memory;
  xmlDict* _names;
  xmlDoc* _document = nullptr;
  /// The text node that grows, its length, and the room there is for its content.
  xmlNode* _text = nullptr;
  std::size_t _textLength = 0;
  std::size_t _textRoom = 0;
};

}  // namespace quorvex
