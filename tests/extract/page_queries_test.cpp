#include "extract/page_queries.h"

#include <memory>
#include <sstream>

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include "common/quiet_xml_errors.h"
#include "extract/page_parser.h"
#include "tests/extract/random_page.h"

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

TEST(PageQueries, SelectTheNodesThatLibxml2Selects) {
  std::mt19937 random(20240607);
  std::size_t compared = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::string page = test::randomPage(random);
    const Document document = parse(page);
    if (document == nullptr) continue;
    const PageAnswers answers = answerPageQueries(document.get()).answers;
    for (std::size_t i = 0; i < pageQueryCount; ++i) {
      const std::string_view expression = expressionOf(static_cast<PageQuery>(i));
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

/// All that is read of a page, in words.
std::string described(const ParsedPage& page) {
  if (page.document() == nullptr) return "no document";
  const PageContent content = answerPageQueries(page.document());
  std::ostringstream out;
  for (const NodeSet& nodes : content.answers) {
    for (const NodeView& node : nodes.value_or(std::vector<NodeView>()))
      out << node.text().value_or("-") << '|' << node.firstAttributeText().value_or("-") << '|';
    out << nodes.has_value() << '\n';
  }
  for (const PlaceMark& mark : content.placeMarks) {
    out << int{static_cast<std::uint8_t>(mark.kind)} << int{mark.level} << mark.continues
        << mark.fragment << ' ' << mark.firstText << '-' << mark.endText << '\n';
  }
  out << content.traits.furnitureSize << ' ' << content.traits.linkSize << ' '
      << content.traits.language;
  return out.str();
}

TEST(PageQueries, ReadTheSameOfBothKindsOfTree) {
  const QuietXmlErrors quiet;
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    const Data page(test::randomPage(random));
    ASSERT_EQ(described(parsePage(page, {}, PageTreeKind::arena)),
              described(parsePage(page, {}, PageTreeKind::plain)))
        << page.bytes();
  }
}

}  // namespace
}  // namespace quorvex
