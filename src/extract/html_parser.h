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
#include "extract/page_questions.h"
#include "extract/page_tree.h"

namespace quorvex {

/// The HTML query layer. Safe from several threads, each with pages of its own; nothing outlives a
/// call.
class QXHTMLParser {
 public:
  /// Parses the page and gives the dictionary of each node that the expression selects, in document
  /// order. Null, after a message that names `path`, when the page cannot be parsed, the expression
  /// cannot be evaluated or its value is no node set.
  static std::optional<Array> objectsForXPath(std::string_view xpath, const Data& inHTML,
                                              const std::string& path);

  /// A parsed page.
  class Page {
   public:
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// The nodes that answer a question, with the messages of objectsForXPath; none where that
    /// gives null. They live as long as the page.
    std::span<const NodeView> nodes(PageQuestion question);

   private:
    friend class QXHTMLParser;
    Page(const Data& html, const std::string& path);

    bool beginQuery(std::string_view xpath) const;
    std::optional<Array> objectsForXPath(std::string_view xpath) const;

    const std::string& _path;
    const std::unique_ptr<const PageTree> _tree;
    xmlDoc* const _document;
    std::optional<PageAnswers> _answers;
  };

  /// Parses the page once, lets `ask` put any number of questions, and frees the tree.
  static void withPage(const Data& html, const std::string& path,
                       const std::function<void(Page&)>& ask);

  const std::string& relativePath() const { return _relativePath; }
  void setRelativePath(std::string path) { _relativePath = std::move(path); }

 private:
  std::string _relativePath;  ///< for its owner's use; queries get their path with each call
};

}  // namespace quorvex
