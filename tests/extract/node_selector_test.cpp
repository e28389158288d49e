#include "extract/node_selector.h"

#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include "extract/parse_document_operation.h"

namespace quorvex {
namespace {

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Document parse(const std::string& html) {
  return {htmlReadMemory(html.data(), static_cast<int>(html.size()), "", nullptr,
                         HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING),
          xmlFreeDoc};
}

NodeSelectorSet::NodeSet askLibxml2(xmlDoc* document, const std::string& expression) {
  xmlXPathContext* context = xmlXPathNewContext(document);
  xmlXPathObject* result =
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context);
  NodeSelectorSet::NodeSet nodes;
  if (result != nullptr && result->nodesetval != nullptr) {
    xmlNode** const table = result->nodesetval->nodeTab;
    nodes.emplace(table, table + result->nodesetval->nodeNr);
  }
  xmlXPathFreeObject(result);
  xmlXPathFreeContext(context);
  return nodes;
}

/// Those of this page, and all that the product asks.
std::vector<std::string> answered() {
  std::vector<std::string> expressions = {
      "//meta[ translate( @name , \"aab-\" , 'xyz' ) = 'xobot' ]/@content",
      "//body//text()[not(parent::a[contains(@href,'x:') or contains(@href,'help:')])]",
      "//a[contains(@href,'help:') or contains(@href,'')]",
      "//b//text() | //a//text()[parent::a] | //a",
      "//p[not(contains(@id,'q'))] | //p/@id | //div",
      "//div//text()[parent::b[not(contains(@id,'x')) or parent::a]]",
  };
  for (std::size_t i = 0; i < pageQueries().count(); ++i)
    expressions.push_back(pageQueries().expression(i));
  return expressions;
}

TEST(NodeSelector, RefusesWhatTheWalkCannotAnswer) {
  for (const char* expression : {"",
                                 "//",
                                 "/html",
                                 "//a/b",
                                 "//a//b",
                                 "//*",
                                 "//a[1]",
                                 "//a[@href]",
                                 "count(//a)",
                                 "//a[contains(@href,'x'",
                                 "//a | ",
                                 "//a]",
                                 "//x:a",
                                 "//a/text()",
                                 "//a[contains(.,'x')]",
                                 "//a[contains(@href,'x') and contains(@id,'y')]",
                                 "//a[translate(@n,'\xC3\xA4','a')='a']",
                                 "//text()",
                                 "//a/@*",
                                 "//a[parent::node()]",
                                 "//a//textual()"}) {
    EXPECT_FALSE(NodeSelector::compile(expression)) << expression;
  }
  std::string deep = "//a[";
  for (int i = 0; i < 100000; ++i)
    deep += "not(";
  EXPECT_FALSE(NodeSelector::compile(deep));
}

/// A page of elements, attributes and texts from a small stock, badly nested as often as not.
std::string randomPage(std::mt19937& random) {
  static const std::vector<std::string> pieces = {"<a href='help:x'>",
                                                  "<a name=n id=i href=y>",
                                                  "<a id='' name=n>",
                                                  "<a href>",
                                                  "</a>",
                                                  "<b id=x>",
                                                  "</b>",
                                                  "<div>",
                                                  "</div>",
                                                  "<p id=q>",
                                                  "<p>",
                                                  "<body id=B>",
                                                  "</body>",
                                                  "<meta name=ROBOTS content=noindex>",
                                                  "<meta name=aobot-b content=c>",
                                                  "<meta content=z>",
                                                  "text ",
                                                  "&amp;",
                                                  "&nosuch;",
                                                  "<!-- c -->",
                                                  "<script>if (a < b) help:</script>",
                                                  "<title>t",
                                                  "</title>",
                                                  "<html>",
                                                  "<table><tr><td>",
                                                  "</table>",
                                                  "<svg:a id=s>",
                                                  "<?pi x?>",
                                                  "\n  ",
                                                  "<a xmlns='u' href='x:y'>",
                                                  "<style>a{}</style>",
                                                  "<textarea><a id=in>",
                                                  "<select>"};
  std::string page;
  const std::size_t length = random() % 60;
  for (std::size_t i = 0; i < length; ++i)
    page += pieces[random() % pieces.size()];
  return page;
}

TEST(NodeSelector, GivesTheNodesThatLibxml2Gives) {
  const std::vector<std::string> expressions = answered();
  std::vector<std::optional<NodeSelector>> selectors;
  for (const std::string& expression : expressions) {
    selectors.push_back(NodeSelector::compile(expression));
    ASSERT_TRUE(selectors.back()) << expression;
  }
  const NodeSelectorSet set(std::move(selectors));
  std::mt19937 random(20240607);
  std::size_t compared = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::string page = randomPage(random);
    const Document document = parse(page);
    if (document == nullptr) continue;
    const auto selected = set.select(document.get());
    for (std::size_t i = 0; i < expressions.size(); ++i) {
      ASSERT_EQ(selected[i], askLibxml2(document.get(), expressions[i])) << expressions[i] << '\n'
                                                                         << page;
      compared += selected[i] ? selected[i]->size() : 0;
    }
  }
  EXPECT_GT(compared, 10000U);
}

}  // namespace
}  // namespace quorvex
