#pragma once

#include <optional>
#include <string>

#include <libxml/tree.h>

#include "common/value.h"

namespace quorvex {

/// The dictionary of a selected node, its strings UTF-8 (ill-formed sequences become U+FFFD):
///
///   "nodeName"            its name, when it has one
///   "nodeText"            a text node's content; else the content of its text children, joined
///   "nodeAttributeArray"  one dictionary for each attribute, in their order: "attributeName", and
///                         "nodeText" or, when its first child is no text node, "attributeText"
///   "nodeChildArray"      the dictionaries of its other children
Dictionary nodeDictionary(const xmlNode* node);

/// Reads single entries of a node's dictionary without making the dictionary. Views the tree, so it
/// lives no longer than the page.
class NodeView {
 public:
  explicit NodeView(const xmlNode* node) : _node(node) {}

  const xmlNode* node() const { return _node; }

  /// Appends the "nodeText" entry to `out`; false, with `out` as it was, when there is none.
  bool appendText(std::string& out) const;
  std::optional<std::string> text() const;

  /// Whether a page shows the text node in another paragraph than one before it: where a block
  /// begins or ends between them, or a line is left blank.
  bool beginsParagraphAfter(const NodeView& earlier) const;
  /// Whether the line breaks of a text node are shown.
  bool isPreformatted() const;

  /// The "nodeText" entry of the first dictionary in "nodeAttributeArray".
  std::optional<std::string> firstAttributeText() const;

 private:
  const xmlNode* _node;
};

}  // namespace quorvex
