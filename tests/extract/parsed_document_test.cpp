#include "extract/parsed_document.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

TEST(ParsedDocument, DerivesPaths) {
  QXParsedDocument document;
  EXPECT_EQ(document.absolutePathWithFragment(), "/");
  QXParsedDocument relative("a/b.html");
  relative.setFirstAnchor("top");
  EXPECT_EQ(relative.absolutePathWithFragment(), "/a/b.html#top");
  QXParsedDocument absolute("/a.html");
  absolute.setFirstAnchor("");
  EXPECT_EQ(absolute.absolutePathWithFragment(), "/a.html#");
}

TEST(ParsedDocument, PreparesTitles) {
  for (const auto& [title, prepared] : {std::pair{"\n\t\tOne   Two ", "One Two"},
                                        {" \xC2\xA0\xE2\x80\xA8 ", ""},
                                        {"", ""},
                                        {"a\xE3\x80\x80\x62", "a b"},
                                        {"it\xE2\x80\x99s", "it\xE2\x80\x99s"}}) {
    QXParsedDocument document;
    document.title() = title;
    EXPECT_EQ(document.preparedTitle(), prepared);
  }
}

TEST(ParsedDocument, CutsKeywords) {
  using Words = std::vector<std::string>;
  for (const auto& [keywords, words] : {std::pair{" a, ,b,,c ", Words{"a", "", "b", "c"}},
                                        {",,", Words{}},
                                        {" ", Words{""}},
                                        {"a b,\nc\n", Words{"a b", "\nc\n"}},
                                        {"\xC2\xA0x\t", Words{"x"}}}) {
    QXParsedDocument document;
    document.keywords() = keywords;
    EXPECT_EQ(document.keywordsArray(), words) << keywords;
  }
  EXPECT_EQ(QXParsedDocument().keywordsArray(), std::nullopt);
}

TEST(ParsedDocument, JoinsTextAndSummarises) {
  QXParsedDocument document;
  EXPECT_EQ(document.fullText(), "  ");
  document.content() = "The pump moves water. Water flows through the pump into the tank. Yes.";
  const std::string sentence = document.summaryGeneratedIfNecessary();
  EXPECT_FALSE(sentence.empty());
  EXPECT_NE(document.content().find(sentence), std::string::npos);
  EXPECT_LT(sentence.size(), document.content().size());
  document.summary() = "S";
  EXPECT_EQ(document.summaryGeneratedIfNecessary(), "S");
  EXPECT_EQ(document.description(),
            "\npath: \nabsolutePath: 1\ntitle: 0\nsummary: 1\nkeywords: 0\nidentifier: 0\n"
            "firstAnchor: 0\nanchors: 0\nxScriptLinks: 0\nanchorsOnly: 0\ndontIndex: 0\n"
            "keywordsOnly: 0\nfullText: 1\npreparedTitle: 0\nabsolutePathWithFragment: 1\n"
            "summaryGeneratedIfNecessary: S\ncontent: 1\n");
}

TEST(OrderedStringSet, KeepsFirstPlaces) {
  OrderedStringSet set;
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 1000; ++i)
      set.add("anchor" + std::to_string(i));
  }
  OrderedStringSet moved = std::move(set);
  moved.add("anchor999");
  moved.add("");
  ASSERT_EQ(moved.size(), 1001U);
  int i = 0;
  for (const std::string& name : moved) {
    EXPECT_EQ(name, i < 1000 ? "anchor" + std::to_string(i) : "");
    ++i;
  }
}

}  // namespace
}  // namespace quorvex
