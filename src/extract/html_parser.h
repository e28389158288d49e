#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <libxml/tree.h>

#include "common/value.h"
#include "extract/node_view.h"
#include "extract/page_queries.h"
#include "extract/page_tree.h"
#include "platform/textsift.h"

namespace quorvex {

/// The HTML query layer. Thread-safe if each thread has its own pages; no page outlives its call.
class QXHTMLParser {
 public:
  /// Parses the page and returns the dictionary of each node that the expression selects, in
  /// document order. Null, after a message, when the page cannot be parsed, the expression cannot
  /// be evaluated or its value is not a node set.
  static std::optional<Array> objectsForXPath(std::string_view xpath, Data inHTML,
                                              const std::string& path);

  /// A parsed page.
  class Page {
   public:
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// Returns the nodes that answer a query, logging as objectsForXPath does; none where that
    /// returns null. Valid as long as the page.
    std::span<const NodeView> nodes(PageQuery query);
    /// Returns the places in the body; their offsets are numbers of texts. `title`: of the page.
    TSPlaces places(std::string_view title);
    /// `text`: the text of the body.
    TSPageTraits traits(std::string_view text);

   private:
    friend class QXHTMLParser;
    Page(Data html, const std::string& path, PageTreeKind kind);

    const PageContent& content();
    bool beginQuery(std::string_view xpath) const;
    std::optional<Array> objectsForXPath(std::string_view xpath) const;

    const std::string& _path;
    const std::unique_ptr<const PageTree> _tree;
    xmlDoc* const _document;
    std::optional<PageContent> _content;
  };

  /// Parses the page once, lets `ask` query it any number of times, and frees the tree. The bytes
  /// are given back before.
  static void withPage(Data html, const std::string& path, const std::function<void(Page&)>& ask);

  const std::string& relativePath() const { return _relativePath; }
  void setRelativePath(std::string path) { _relativePath = std::move(path); }

 private:
  std::string _relativePath;  ///< for the owner; queries receive their path with each call
};

}  // namespace quorvex
