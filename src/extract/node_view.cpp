#include "extract/node_view.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "common/unicode.h"
#include "extract/strings.h"

namespace quorvex {

namespace {

std::string_view view(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

/// A tree may contain invalid UTF-8 if its page names an unknown encoding.
std::string utf8(const xmlChar* text) {
  return validUtf8(std::string(view(text)));
}

/// Checks the type first: attributes and documents have no `content` field.
bool hasContent(const xmlNode* node) {
  return node->type == XML_TEXT_NODE && node->content != nullptr;
}

/// Returns the first child for a node's dictionary. Namespace nodes have another layout, and the
/// children of an entity reference belong to the declaration.
const xmlNode* firstChild(const xmlNode* node) {
  const bool childless = node->type == XML_NAMESPACE_DECL || node->type == XML_ENTITY_REF_NODE;
  return childless ? nullptr : node->children;
}

const xmlAttr* firstAttribute(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE ? node->properties : nullptr;
}

bool isElement(const xmlNode* node, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && view(node->name) == name;
}

/// Elements displayed as blocks.
constexpr auto blockNames = std::to_array<std::string_view>({
    "address",  "article",    "aside",   "blockquote", "body",    "caption",  "center",
    "dd",       "details",    "dialog",  "dir",        "div",     "dl",       "dt",
    "fieldset", "figcaption", "figure",  "footer",     "form",    "frameset", "h1",
    "h2",       "h3",         "h4",      "h5",         "h6",      "header",   "hgroup",
    "hr",       "iframe",     "legend",  "li",         "listing", "main",     "menu",
    "nav",      "noframes",   "ol",      "optgroup",   "option",  "p",        "plaintext",
    "pre",      "search",     "section", "select",     "summary", "table",    "tbody",
    "td",       "textarea",   "tfoot",   "th",         "thead",   "tr",       "ul",
    "xmp",
});
static_assert(std::ranges::is_sorted(blockNames));

/// For each byte, the number of names that begin with a smaller one. Asked for every element
/// between two texts, so few names are compared.
constexpr auto blockNamesBefore = [] {
  std::array<std::uint8_t, 257> before{};
  for (const std::string_view name : blockNames) {
    for (std::size_t byte = static_cast<unsigned char>(name.front()) + 1U; byte < before.size();
         ++byte)
      ++before[byte];
  }
  return before;
}();

/// Whether the node is displayed as a block.
bool isBlock(const xmlNode* node) {
  if (node->type != XML_ELEMENT_NODE) return false;
  const unsigned first = node->name[0];
  const std::size_t begin = blockNamesBefore[first];
  const std::size_t end = blockNamesBefore[first + 1];
  if (begin == end) return false;
  const std::string_view name = view(node->name);
  for (std::size_t i = begin; i < end; ++i) {
    if (blockNames[i] == name) return true;
  }
  return false;
}

Dictionary attributeDictionary(const xmlAttr* attribute) {
  Dictionary dictionary;
  if (attribute->name != nullptr) {
    dictionary.emplace(QXStrings::attributeName, utf8(attribute->name));
  }
  // Only the first piece of a value counts.
  if (const xmlNode* child = attribute->children; child != nullptr) {
    if (hasContent(child)) {
      dictionary.emplace(QXStrings::nodeText, utf8(child->content));
    } else {
      dictionary.emplace(QXStrings::attributeText, nodeDictionary(child));
    }
  }
  return dictionary;
}

}  // namespace

// Recursion is bounded: the parser stops at nesting deeper than xmlParserMaxDepth.
Dictionary nodeDictionary(const xmlNode* node) {
  Dictionary dictionary;
  const xmlChar* name =
      node->type == XML_NAMESPACE_DECL ? reinterpret_cast<const xmlNs*>(node)->prefix : node->name;
  if (name != nullptr) dictionary.emplace(QXStrings::nodeName, utf8(name));
  if (std::optional<std::string> text = NodeView(node).text()) {
    dictionary.emplace(QXStrings::nodeText, *std::move(text));
  }

  Array attributes;
  for (const xmlAttr* attribute = firstAttribute(node); attribute != nullptr;
       attribute = attribute->next) {
    Dictionary entry = attributeDictionary(attribute);
    if (!entry.empty()) attributes.emplace_back(std::move(entry));
  }
  if (!attributes.empty()) dictionary.emplace(QXStrings::nodeAttributeArray, std::move(attributes));

  Array children;
  for (const xmlNode* child = firstChild(node); child != nullptr; child = child->next) {
    if (!hasContent(child)) children.emplace_back(nodeDictionary(child));
  }
  if (!children.empty()) dictionary.emplace(QXStrings::nodeChildArray, std::move(children));
  return dictionary;
}

bool NodeView::appendText(std::string& out) const {
  const std::size_t before = out.size();
  bool found = hasContent(_node);
  if (found) out += view(_node->content);
  for (const xmlNode* child = firstChild(_node); child != nullptr; child = child->next) {
    if (!hasContent(child)) continue;
    out += view(child->content);
    found = true;
  }
  if (!isValidUtf8(std::string_view(out).substr(before))) {
    out.replace(before, std::string::npos, validUtf8(out.substr(before)));
  }
  return found;
}

std::optional<std::string> NodeView::text() const {
  std::string text;
  if (!appendText(text)) return std::nullopt;
  return text;
}

bool NodeView::isBehindBreak(const NodeView& earlier, unsigned lineBreaks) const {
  for (const xmlNode* node = earlier._node; node != _node;) {
    if (const xmlNode* child = node->type == XML_ELEMENT_NODE ? node->children : nullptr) {
      node = child;
    } else {
      while (node->next == nullptr) {
        node = node->parent;
        if (node == nullptr || isBlock(node)) return true;
      }
      node = node->next;
    }
    if (isBlock(node)) return true;
    if (isElement(node, "br") && --lineBreaks == 0) return true;
  }
  return false;
}

bool NodeView::isPermalink() const {
  // In bytes. Whatever is longer is no mark, and measuring it could take long.
  constexpr std::size_t longestMark = 16;
  const xmlNode* parent = _node->parent;
  if (parent == nullptr || !isElement(parent, "a") || !hasContent(_node)) return false;
  const auto* begin = reinterpret_cast<const char*>(_node->content);
  const std::string_view content(begin, ::strnlen(begin, longestMark + 1));
  if (content.size() > longestMark) return false;
  for (std::size_t position = 0; position < content.size();) {
    if (isLetterOrDigit(nextCharacter(content, position))) return false;
  }
  return true;
}

bool NodeView::isPreformatted() const {
  const xmlNode* node = _node;
  while (node != nullptr && !isElement(node, "pre"))
    node = node->parent;
  return node != nullptr;
}

std::optional<std::string> NodeView::firstAttributeText() const {
  const xmlAttr* attribute = firstAttribute(_node);
  if (attribute == nullptr) return std::nullopt;
  const xmlNode* child = attribute->children;
  if (child == nullptr || !hasContent(child)) return std::nullopt;
  return utf8(child->content);
}

}  // namespace quorvex
