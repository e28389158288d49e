#include "extract/arena_page_tree.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include <libxml/HTMLtree.h>
#include <libxml/parserInternals.h>

#include "extract/page_arena.h"
#include "extract/read_attributes.h"

namespace quorvex {

namespace {

constexpr std::size_t smallestTextRoom = 64;

// Nodes end behind the last field that is read, by the parser too. A large page has hundreds of
// thousands.
constexpr std::size_t elementSize = offsetof(xmlNode, nsDef);
constexpr std::size_t textSize = offsetof(xmlNode, properties);
constexpr std::size_t attributeSize = offsetof(xmlAttr, atype);

std::string_view view(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

std::string_view view(const xmlChar* text, int length) {
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

/// Appends to an element or the document.
void append(xmlNode* parent, xmlNode* node) {
  node->parent = parent;
  node->prev = parent->last;
  (parent->last == nullptr ? parent->children : parent->last->next) = node;
  parent->last = node;
}

/// Appends to the open element, else after the root.
void appendToOpenElement(const htmlParserCtxt* parser, xmlNode* node) {
  xmlNode* open = parser->node;
  append(open != nullptr ? open : reinterpret_cast<xmlNode*>(parser->myDoc), node);
}

/// Ends the page as libxml2's own builder does when a text is too long.
void stopOutOfMemory(htmlParserCtxt* parser) {
  parser->errNo = XML_ERR_NO_MEMORY;
  parser->instate = XML_PARSER_EOF;
  parser->disableSAX = 1;
}

bool isHelpLink(const xmlChar* element, const xmlChar** attributes) {
  if (view(element) != "a") return false;
  for (const xmlChar** at = attributes; *at != nullptr; at += 2) {
    if (at[1] != nullptr && view(at[0]) == "href" && quorvex::isHelpLink(view(at[1]))) return true;
  }
  return false;
}

class ArenaPageTree final : public PageTree {
 public:
  explicit ArenaPageTree(htmlParserCtxt* parser);
  ~ArenaPageTree() override;
  ArenaPageTree(const ArenaPageTree&) = delete;
  ArenaPageTree& operator=(const ArenaPageTree&) = delete;

 private:
  void freeDocument();
  static ArenaPageTree& of(void* parser);
  static void startElement(void* parser, const xmlChar* name, const xmlChar** attributes);
  static void characters(void* parser, const xmlChar* text, int length);
  static void cdataBlock(void* parser, const xmlChar* text, int length);
  static void comment(void* parser, const xmlChar* text);
  static void processingInstruction(void* parser, const xmlChar* target, const xmlChar* data);

  template <std::size_t size, typename Node = xmlNode>
  Node* make(xmlElementType type, const xmlChar* name, xmlDoc* document);
  xmlChar* copy(std::string_view text);
  xmlChar* copy(std::string_view text, std::size_t room);
  const xmlChar* keep(const xmlChar* name);
  const xmlChar* elementName(htmlParserCtxt* parser, const xmlChar* name);
  xmlAttr* makeAttribute(xmlDoc* document, const xmlChar* name, const xmlChar* value);
  void addText(htmlParserCtxt* parser, xmlElementType type, std::string_view text);

  PageArena _memory;
  xmlDict* _names;
  /// The growing text node, its length and its capacity.
  xmlNode* _text = nullptr;
  std::size_t _textLength = 0;
  std::size_t _textRoom = 0;
};

ArenaPageTree::ArenaPageTree(htmlParserCtxt* parser) : _names(parser->dict) {
  xmlDictReference(_names);
  parser->_private = this;
  xmlSAXHandler& handler = *parser->sax;
  handler.startElement = startElement;
  handler.characters = characters;
  handler.cdataBlock = cdataBlock;
  handler.comment = comment;
  handler.processingInstruction = processingInstruction;
}

ArenaPageTree::~ArenaPageTree() {
  freeDocument();
  xmlDictFree(_names);
}

/// Frees the parts outside the tree's own memory.
void ArenaPageTree::freeDocument() {
  if (_document == nullptr) return;
  // The parser itself adds a second <html> tag's attributes to the first.
  for (xmlNode* node = _document->children; node != nullptr; node = node->next) {
    xmlAttr* attribute = node->type == XML_ELEMENT_NODE ? node->properties : nullptr;
    while (attribute != nullptr) {
      xmlAttr* next = attribute->next;
      if (attribute->_private != this) xmlFreeProp(attribute);
      attribute = next;
    }
  }
  auto* const declaration = reinterpret_cast<xmlNode*>(_document->intSubset);
  _document->children = declaration;
  _document->last = declaration;
  if (declaration != nullptr) declaration->next = declaration->prev = nullptr;
  xmlFreeDoc(_document);
}

ArenaPageTree& ArenaPageTree::of(void* parser) {
  return *static_cast<ArenaPageTree*>(static_cast<htmlParserCtxt*>(parser)->_private);
}

/// `name` is not copied.
template <std::size_t size, typename Node>
Node* ArenaPageTree::make(xmlElementType type, const xmlChar* name, xmlDoc* document) {
  auto* node = static_cast<Node*>(std::memset(_memory.allocateNode(size), 0, size));
  node->_private = this;
  node->type = type;
  node->name = name;
  node->doc = document;
  return node;
}

xmlChar* ArenaPageTree::copy(std::string_view text) {
  return copy(text, text.size());
}

xmlChar* ArenaPageTree::copy(std::string_view text, std::size_t room) {
  auto* bytes = reinterpret_cast<xmlChar*>(_memory.allocateBytes(room + 1));
  std::memcpy(bytes, text.data(), text.size());
  bytes[text.size()] = 0;
  return bytes;
}

/// Copies a name unless the dictionary, which the tree keeps alive, owns it; most are.
const xmlChar* ArenaPageTree::keep(const xmlChar* name) {
  return xmlDictOwns(_names, name) == 1 ? name : copy(view(name));
}

/// Returns an element's name without a prefix.
const xmlChar* ArenaPageTree::elementName(htmlParserCtxt* parser, const xmlChar* name) {
  if (view(name).find(':') == std::string_view::npos) return keep(name);
  xmlChar* prefix = nullptr;
  xmlChar* local = xmlSplitQName(parser, name, &prefix);
  const xmlChar* copied = copy(view(local));
  xmlFree(local);
  xmlFree(prefix);
  return copied;
}

void ArenaPageTree::startElement(void* context, const xmlChar* name, const xmlChar** attributes) {
  auto* const parser = static_cast<htmlParserCtxt*>(context);
  ArenaPageTree& tree = of(parser);
  xmlDoc* const document = parser->myDoc;
  if (document == nullptr) return;
  auto* element =
      tree.make<elementSize>(XML_ELEMENT_NODE, tree.elementName(parser, name), document);
  // Content after the end of the root element goes into it.
  xmlNode* parent = parser->node != nullptr ? parser->node : document->children;
  if (parent == nullptr || parent->type != XML_ELEMENT_NODE) {
    parent = reinterpret_cast<xmlNode*>(document);
  }
  if (nodePush(parser, element) < 0) return;  // nested too deeply: the parser has stopped
  append(parent, element);
  if (attributes == nullptr) return;
  const bool areAllRead = isHelpLink(element->name, attributes);
  xmlAttr* last = nullptr;
  for (const xmlChar** at = attributes; *at != nullptr; at += 2) {
    if (!areAllRead && !isReadAttribute(element->name, at[0])) continue;
    xmlAttr* attribute = tree.makeAttribute(document, at[0], at[1]);
    attribute->parent = element;
    attribute->prev = last;
    (last == nullptr ? element->properties : last->next) = attribute;
    last = attribute;
  }
}

xmlAttr* ArenaPageTree::makeAttribute(xmlDoc* document, const xmlChar* name, const xmlChar* value) {
  auto* attribute = make<attributeSize, xmlAttr>(XML_ATTRIBUTE_NODE, keep(name), document);
  if (value == nullptr && htmlIsBooleanAttr(name) != 0) value = attribute->name;
  if (value == nullptr) return attribute;
  auto* text = make<textSize>(XML_TEXT_NODE, xmlStringText, document);
  text->content = copy(view(value));
  text->parent = reinterpret_cast<xmlNode*>(attribute);
  attribute->children = attribute->last = text;
  return attribute;
}

void ArenaPageTree::characters(void* parser, const xmlChar* text, int length) {
  of(parser).addText(static_cast<htmlParserCtxt*>(parser), XML_TEXT_NODE, view(text, length));
}

void ArenaPageTree::cdataBlock(void* parser, const xmlChar* text, int length) {
  of(parser).addText(static_cast<htmlParserCtxt*>(parser), XML_CDATA_SECTION_NODE,
                     view(text, length));
}

/// Merges consecutive texts into one node.
void ArenaPageTree::addText(htmlParserCtxt* parser, xmlElementType type, std::string_view text) {
  xmlNode* element = parser->node;
  if (element == nullptr) return;
  if (_text == nullptr || element->last != _text || _text->type != type) {
    _text = make<textSize>(type, type == XML_TEXT_NODE ? xmlStringText : nullptr, parser->myDoc);
    append(element, _text);
    _text->content = copy(text);
    _textLength = _textRoom = text.size();
    return;
  }
  const std::size_t length = _textLength + text.size();
  if (length > XML_MAX_TEXT_LENGTH) {
    stopOutOfMemory(parser);
    return;
  }
  const char* const end = reinterpret_cast<const char*>(_text->content) + _textRoom + 1;
  if (length > _textRoom && _memory.extend(end, length - _textRoom)) {
    _textRoom = length;
  } else if (length > _textRoom) {
    _textRoom = std::max(2 * length, smallestTextRoom);
    _text->content = copy(view(_text->content, static_cast<int>(_textLength)), _textRoom);
  }
  std::memcpy(_text->content + _textLength, text.data(), text.size());
  _text->content[length] = 0;
  _textLength = length;
}

void ArenaPageTree::comment(void* context, const xmlChar* /*text*/) {
  auto* const parser = static_cast<htmlParserCtxt*>(context);
  appendToOpenElement(parser,
                      of(parser).make<textSize>(XML_COMMENT_NODE, xmlStringComment, parser->myDoc));
}

void ArenaPageTree::processingInstruction(void* context, const xmlChar* target,
                                          const xmlChar* /*data*/) {
  auto* const parser = static_cast<htmlParserCtxt*>(context);
  ArenaPageTree& tree = of(parser);
  appendToOpenElement(parser,
                      tree.make<textSize>(XML_PI_NODE, tree.copy(view(target)), parser->myDoc));
}

}  // namespace

std::unique_ptr<PageTree> arenaPageTree(htmlParserCtxt* parser) {
  return std::make_unique<ArenaPageTree>(parser);
}

}  // namespace quorvex
