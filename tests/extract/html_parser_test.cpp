#include "extract/html_parser.h"

#include <filesystem>

#include "common/files.h"
#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

using test::printed;

std::string objects(const std::string& xpath, const std::string& html) {
  const auto answer = QXHTMLParser::objectsForXPath(xpath, Data(html), "p.html");
  if (!answer) return "null";
  std::string text = describe(*answer);
  std::erase_if(text, [](char c) { return c == '\n' || c == ' '; });
  return text;
}

TEST(HTMLParser, MakesNodeDictionaries) {
  struct Case {
    const char* xpath;
    const char* html;
    const char* expected;
  };
  for (const auto& [xpath, html, expected] : {
           Case{"//title", "<p>x", "()"},
           Case{"//title", "<title>T</title>", "({nodeName=title;nodeText=T;})"},
           Case{"//p", "<p>Foo <b>bar</b> baz</p>",
                "({nodeChildArray=({nodeName=b;nodeText=bar;});nodeName=p;nodeText=Foobaz;})"},
           Case{"//a", "<a name=n href=h>w</a>",
                "({nodeAttributeArray=({attributeName=name;nodeText=n;},"
                "{attributeName=href;nodeText=h;});nodeName=a;nodeText=w;})"},
           Case{"//a", "<a name><i></i></a>",
                "({nodeAttributeArray=({attributeName=name;});nodeChildArray=({nodeName=i;});"
                "nodeName=a;})"},
           Case{"//body/@id", "<body id=Q>", "({nodeName=id;nodeText=Q;})"},
           Case{"//p//text()", "<p>a&lt;b<!--c--></p>", "({nodeName=text;nodeText=a<b;})"},
           Case{"//p/comment()", "<p><!--c--></p>", "({nodeName=comment;})"},
           Case{"//script/text()", "<script>x</script>", "({})"},
           Case{"/", "<p>x", nullptr},
           Case{"//p/namespace::node()", "<p>x", "({nodeName=xml;})"},
           Case{"count(//p)", "<p>", "null"},
           Case{"//p[", "<p>", "null"},
           Case{"//p", "", "null"},
       }) {
    const std::string answer = objects(xpath, html);
    if (expected == nullptr) continue;  // only has to terminate
    EXPECT_EQ(answer, expected) << xpath << ' ' << html;
  }
}

TEST(HTMLParser, SaysWhyThereIsNoAnswer) {
  const auto messages = [](const char* xpath, const char* html) {
    return printed(4, [&] { (void)QXHTMLParser::objectsForXPath(xpath, Data(html), "p.html"); });
  };
  EXPECT_EQ(messages("//p", ""), "p.html -- Unable to parse HTML into document\n");
  EXPECT_EQ(messages("//p", "<p>"), "p.html -- Performing xpath: //p\n");
  EXPECT_EQ(messages("//p[", "<p>"),
            "p.html -- Performing xpath: //p[\n - Unable to evaluate xpath: //p[\n");
  EXPECT_EQ(messages("count(//p)", "<p>"),
            "p.html -- Performing xpath: count(//p)\n"
            " - No nodes returned from xpath: count(//p)\n");
}

TEST(HTMLParser, IsSilentWhateverThePageHolds) {
  const std::string wrongCharset = "<meta charset=utf-16><p>\xFF\xFE\x80\xC3(";
  EXPECT_EQ(printed(-1,
                    [&] {
                      for (const char* xpath : {"//p", "//p[", "nosuch()", "$x"}) {
                        (void)QXHTMLParser::objectsForXPath(xpath, Data(wrongCharset), "p");
                      }
                    }),
            "");
}

// A page answers each query as evaluating its expression would.
TEST(HTMLParser, AsksOnePageAsItAsksMany) {
  std::size_t pages = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(
           std::filesystem::path(QUORVEX_SOURCE_DIR) / "examples")) {
    if (entry.path().extension() != ".html") continue;
    const Data html = *readFile(entry.path().string());
    ++pages;
    for (std::size_t i = 0; i < pageQueryCount; ++i) {
      const auto query = static_cast<PageQuery>(i);
      Array together;
      const std::string messages = printed(4, [&] {
        QXHTMLParser::withPage(html, "p.html", [&](QXHTMLParser::Page& page) {
          for (const NodeView& node : page.nodes(query))
            together.emplace_back(nodeDictionary(node.node()));
        });
      });
      Array alone;
      EXPECT_EQ(messages, printed(4, [&] {
                  alone = QXHTMLParser::objectsForXPath(expressionOf(query), html, "p.html")
                              .value_or(Array());
                }));
      EXPECT_EQ(together, alone) << expressionOf(query);
    }
  }
  EXPECT_GE(pages, 10U);
}

}  // namespace
}  // namespace quorvex
