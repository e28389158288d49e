#include "extract/html_parser.h"

#include <span>

#include <libxml/xpath.h>

#include "common/log.h"
#include "common/quiet_xml_errors.h"
#include "extract/page_parser.h"

namespace quorvex {

namespace {

std::unique_ptr<const PageTree> parse(const Data& html, const std::string& path) {
  ParsedPage page = parsePage(html);
  if (!page.trouble.empty()) QXLog(1, "%@ -- Gave up the page: %@", path, page.trouble);
  return std::move(page.tree);
}

struct FreeContext {
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};
struct FreeObject {
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

using XPathResult = std::unique_ptr<xmlXPathObject, FreeObject>;

void logNoNodeSet(std::string_view xpath) {
  QXLog(4, " - No nodes returned from xpath: %@", xpath);
}

/// Asks libxml2's engine. Null, after a message, when there is no node set.
XPathResult evaluate(xmlDoc* document, std::string_view xpath) {
  const std::unique_ptr<xmlXPathContext, FreeContext> context(xmlXPathNewContext(document));
  if (context == nullptr) {
    QXLog(1, " - Unable to parse html into document");
    return nullptr;
  }
  const std::string expression(xpath);
  XPathResult result(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context.get()));
  if (result == nullptr) {
    QXLog(1, " - Unable to evaluate xpath: %@", xpath);
  } else if (result->type != XPATH_NODESET || result->nodesetval == nullptr) {
    logNoNodeSet(xpath);
    result.reset();
  }
  return result;
}

std::span<xmlNode* const> nodes(const XPathResult& result) {
  const xmlNodeSet& set = *result->nodesetval;
  return {set.nodeTab, static_cast<std::size_t>(set.nodeNr)};
}

std::vector<std::optional<NodeSelector>> compileAll(const std::vector<std::string>& expressions) {
  std::vector<std::optional<NodeSelector>> selectors;
  selectors.reserve(expressions.size());
  for (const std::string& expression : expressions) {
    selectors.push_back(NodeSelector::compile(expression));
  }
  return selectors;
}

}  // namespace

XPathQueries::XPathQueries(std::vector<std::string> expressions)
    : _expressions(std::move(expressions)), _selectors(compileAll(_expressions)) {}

std::optional<Array> QXHTMLParser::objectsForXPath(std::string_view xpath, const Data& inHTML,
                                                   const std::string& path) {
  std::optional<Array> objects;
  withPage(inHTML, path, XPathQueries({}),
           [&](Page& page) { objects = page.objectsForXPath(xpath); });
  return objects;
}

void QXHTMLParser::withPage(const Data& html, const std::string& path, const XPathQueries& queries,
                            const std::function<void(Page&)>& ask) {
  initializePageParser();
  const QuietXmlErrors quiet;
  Page page(queries, html, path);
  ask(page);
}

QXHTMLParser::Page::Page(const XPathQueries& queries, const Data& html, const std::string& path)
    : _queries(queries),
      _path(path),
      _tree(parse(html, path)),
      _document(_tree == nullptr ? nullptr : _tree->document()) {}

bool QXHTMLParser::Page::beginQuery(std::string_view xpath) const {
  if (_document == nullptr) {
    QXLog(1, "%@ -- Unable to parse HTML into document", _path);
    return false;
  }
  QXLog(4, "%@ -- Performing xpath: %@", _path, xpath);
  return true;
}

std::optional<Array> QXHTMLParser::Page::objectsForXPath(std::string_view xpath) {
  if (!beginQuery(xpath)) return std::nullopt;
  const XPathResult result = evaluate(_document, xpath);
  if (result == nullptr) return std::nullopt;
  Array objects;
  for (const xmlNode* node : nodes(result))
    objects.emplace_back(nodeDictionary(node));
  return objects;
}

std::optional<std::size_t> QXHTMLParser::Page::visit(
    std::size_t query, const std::function<void(const NodeView&)>& visit) {
  if (!beginQuery(_queries.expression(query))) return std::nullopt;
  XPathResult result;
  std::span<xmlNode* const> selected;
  if (_queries.selectors().answers(query)) {
    if (!_selected) _selected = _queries.selectors().select(_document);
    const NodeSelectorSet::NodeSet& answer = (*_selected)[query];
    if (!answer) {
      logNoNodeSet(_queries.expression(query));
      return std::nullopt;
    }
    selected = *answer;
  } else {
    result = evaluate(_document, _queries.expression(query));
    if (result == nullptr) return std::nullopt;
    selected = nodes(result);
  }
  for (const xmlNode* node : selected)
    visit(NodeView(node));
  return selected.size();
}

}  // namespace quorvex
