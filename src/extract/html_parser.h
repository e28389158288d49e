#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include "common/value.h"
#include "extract/node_selector.h"
#include "extract/node_view.h"
#include "extract/page_tree.h"

namespace quorvex {

/// XPath expressions made ready for many pages. Immutable; safe from several threads.
class XPathQueries {
 public:
  explicit XPathQueries(std::vector<std::string> expressions);

  std::size_t count() const { return _expressions.size(); }
  const std::string& expression(std::size_t query) const { return _expressions[query]; }
  const NodeSelectorSet& selectors() const { return _selectors; }

 private:
  std::vector<std::string> _expressions;
  NodeSelectorSet _selectors;
};

/// The HTML query layer: the only place that touches libxml2's HTML parser and XPath engine. Safe
/// from several threads, each with pages of its own; nothing outlives a call.
class QXHTMLParser {
 public:
  /// Parses the page and gives the dictionary of each node that the expression selects, in document
  /// order. Null, after a message that names `path`, when the page cannot be parsed, the expression
  /// cannot be evaluated or its value is no node set.
  static std::optional<Array> objectsForXPath(std::string_view xpath, const Data& inHTML,
                                              const std::string& path);

  /// A parsed page. Every question has the result and the messages that objectsForXPath has.
  class Page {
   public:
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    std::optional<Array> objectsForXPath(std::string_view xpath);

    /// Calls `visit` with each node that query number `query` selects; gives their number, or null.
    std::optional<std::size_t> visit(std::size_t query,
                                     const std::function<void(const NodeView&)>& visit);

   private:
    friend class QXHTMLParser;
    Page(const XPathQueries& queries, const Data& html, const std::string& path);

    bool beginQuery(std::string_view xpath) const;

    const XPathQueries& _queries;
    const std::string& _path;
    const std::unique_ptr<const PageTree> _tree;
    xmlDoc* const _document;
    std::optional<std::vector<NodeSelectorSet::NodeSet>> _selected;
  };

  /// Parses the page once, lets `ask` put any number of questions, and frees the tree.
  static void withPage(const Data& html, const std::string& path, const XPathQueries& queries,
                       const std::function<void(Page&)>& ask);

  const std::string& relativePath() const { return _relativePath; }
  void setRelativePath(std::string path) { _relativePath = std::move(path); }

 private:
  std::string _relativePath;  ///< for its owner's use; queries get their path with each call
};

}  // namespace quorvex
