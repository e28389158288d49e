#pragma once

#include <optional>
#include <string>

#include <libxml/tree.h>

#include "common/value.h"

namespace quorvex {

/// Returns a node's dictionary in UTF-8 (ill-formed sequences become U+FFFD):
///
///   "nodeName"            its name, when it has one
///   "nodeText"            a text node's content; else the content of its text children, joined
///   "nodeAttributeArray"  one dictionary for each attribute, in their order: "attributeName", and
///                         "nodeText" or, when its first child is no text node, "attributeText"
///   "nodeChildArray"      the dictionaries of its other children
Dictionary nodeDictionary(const xmlNode* node);

/// Reads single entries of a node's dictionary without building it. Refers to the tree, so it must
/// not outlive the page.
class NodeView {
 public:
  explicit NodeView(const xmlNode* node) : _node(node) {}

  const xmlNode* node() const { return _node; }

  /// Appends the "nodeText" entry to `out`; without one, returns false and leaves `out`.
  bool appendText(std::string& out) const;
  std::optional<std::string> text() const;

  /// Whether the text node is displayed in a later paragraph than an earlier one: a block begins or
  /// ends between them, or a line is blank.
  bool beginsParagraphAfter(const NodeView& earlier) const { return isBehindBreak(earlier, 2); }
  /// Whether it is displayed on a later line, be it in the same paragraph.
  bool beginsLineAfter(const NodeView& earlier) const { return isBehindBreak(earlier, 1); }
  /// Whether a text node is a link without letters and digits, such as the mark behind a heading
  /// that leads to the heading itself.
  bool isPermalink() const;
  /// Whether a text node's line breaks are displayed.
  bool isPreformatted() const;

  /// The "nodeText" entry of the first dictionary in "nodeAttributeArray".
  std::optional<std::string> firstAttributeText() const;

 private:
  /// Whether a block begins or ends, or so many lines end, between an earlier text and this one.
  bool isBehindBreak(const NodeView& earlier, unsigned lineBreaks) const;

  const xmlNode* _node;
};

}  // namespace quorvex
