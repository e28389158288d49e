#include "extract/html_parser.h"

#include <span>
#include <utility>

#include <libxml/xpath.h>

#include "common/log.h"
#include "common/quiet_xml_errors.h"
#include "extract/page_parser.h"
#include "extract/places.h"

namespace quorvex {

namespace {

std::unique_ptr<const PageTree> parse(Data html, const std::string& path, PageTreeKind kind) {
  ParsedPage page = parsePage(std::move(html), {}, kind);
  if (!page.trouble.empty()) QXLog(1, "%@ -- Gave up on the page: %@", path, page.trouble);
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

/// Uses libxml2's engine. Null, after a message, when there is no node set.
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

}  // namespace

std::optional<Array> QXHTMLParser::objectsForXPath(std::string_view xpath, Data inHTML,
                                                   const std::string& path) {
  initializePageParser();
  const QuietXmlErrors quiet;
  // An expression may ask for anything.
  return Page(std::move(inHTML), path, PageTreeKind::plain).objectsForXPath(xpath);
}

void QXHTMLParser::withPage(Data html, const std::string& path,
                            const std::function<void(Page&)>& ask) {
  initializePageParser();
  const QuietXmlErrors quiet;
  Page page(std::move(html), path, usualPageTree());
  ask(page);
}

QXHTMLParser::Page::Page(Data html, const std::string& path, PageTreeKind kind)
    : _path(path),
      _tree(parse(std::move(html), path, kind)),
      _document(_tree == nullptr ? nullptr : _tree->document()) {}

bool QXHTMLParser::Page::beginQuery(std::string_view xpath) const {
  if (_document == nullptr) {
    QXLog(1, "%@ -- Unable to parse HTML into document", _path);
    return false;
  }
  QXLog(4, "%@ -- Performing xpath: %@", _path, xpath);
  return true;
}

std::optional<Array> QXHTMLParser::Page::objectsForXPath(std::string_view xpath) const {
  if (!beginQuery(xpath)) return std::nullopt;
  const XPathResult result = evaluate(_document, xpath);
  if (result == nullptr) return std::nullopt;
  const xmlNodeSet& nodes = *result->nodesetval;
  Array objects;
  for (const xmlNode* node : std::span(nodes.nodeTab, static_cast<std::size_t>(nodes.nodeNr)))
    objects.emplace_back(nodeDictionary(node));
  return objects;
}

const PageContent& QXHTMLParser::Page::content() {
  if (!_content) _content = answerPageQueries(_document);
  return *_content;
}

TSPlaces QXHTMLParser::Page::places(std::string_view title) {
  if (_document == nullptr) return {};
  const NodeSet& texts = content().answers[static_cast<std::size_t>(PageQuery::bodyText)];
  return TSPlacesCreate(placesOf(content().placeMarks,
                                 texts ? std::span(*texts) : std::span<const NodeView>(), title));
}

TSPageTraits QXHTMLParser::Page::traits(std::string_view text) {
  return _document == nullptr ? TSPageTraits() : sharesOf(content().traits, text);
}

std::span<const NodeView> QXHTMLParser::Page::nodes(PageQuery query) {
  const std::string_view xpath = expressionOf(query);
  if (!beginQuery(xpath)) return {};
  const NodeSet& nodes = content().answers[static_cast<std::size_t>(query)];
  if (nodes) return *nodes;
  logNoNodeSet(xpath);
  return {};
}

}  // namespace quorvex
