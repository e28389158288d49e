#include "extract/page_questions.h"

#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

namespace quorvex {
namespace {

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Document parse(const std::string& html) {
  return {htmlReadMemory(html.data(), static_cast<int>(html.size()), "", nullptr,
                         HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING),
          xmlFreeDoc};
}

std::optional<std::vector<const xmlNode*>> askLibxml2(xmlDoc* document, std::string_view xpath) {
  const std::string expression(xpath);
  xmlXPathContext* context = xmlXPathNewContext(document);
  xmlXPathObject* result =
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context);
  std::optional<std::vector<const xmlNode*>> nodes;
  if (result != nullptr && result->nodesetval != nullptr) {
    xmlNode** const table = result->nodesetval->nodeTab;
    nodes.emplace(table, table + result->nodesetval->nodeNr);
  }
  xmlXPathFreeObject(result);
  xmlXPathFreeContext(context);
  return nodes;
}

/// A page of random elements, attributes and texts, often badly nested.
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
                                                  "<meta name=keyWords content=c content=d>",
                                                  "<meta name=Description>",
                                                  "<meta name=robotsx content=e>",
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

TEST(PageQuestions, SelectTheNodesThatLibxml2Selects) {
  std::mt19937 random(20240607);
  std::size_t compared = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::string page = randomPage(random);
    const Document document = parse(page);
    if (document == nullptr) continue;
    const PageAnswers answers = answerPageQuestions(document.get());
    for (std::size_t i = 0; i < pageQuestionCount; ++i) {
      const std::string_view expression = expressionOf(static_cast<PageQuestion>(i));
      const auto wanted = askLibxml2(document.get(), expression);
      ASSERT_EQ(answers[i].has_value(), wanted.has_value()) << expression << '\n' << page;
      if (!wanted) continue;
      ASSERT_TRUE(std::ranges::equal(*answers[i], *wanted, {}, &NodeView::node))
          << expression << '\n'
          << page;
      compared += wanted->size();
    }
  }
  EXPECT_GT(compared, 10000U);
}

}  // namespace
}  // namespace quorvex
