#include <gtest/gtest.h>

#include "platform/textsift/sentences.h"
#include "platform/textsift/textsift.h"

namespace quorvex {
namespace {

std::string summary(std::string_view text, std::size_t count = 1) {
  return TSSummaryCopySentenceSummaryString(TSSummaryCreateWithString(text), count)
      .value_or("(null)");
}

TEST(Summary, ProseBeatsWhatStandsAroundIt) {
  const std::string prose = "The garden planner shows where each plant grows best.";
  const std::vector<std::string> pages = {
      prose,
      "Home \n Next \n Previous \n Index \n " + prose,
      "Home \u00BB Docs \u00BB Guide \u00BB Plants \n \n" + prose + " \n \u00A9 2020 Example",
      "Welcome! \n Contents \n 1. Beds \n 2. Tools \n " + prose,
      "Previous Up Chapter 5. Garden Planner 5.1. \n \n" + prose,
      "\n Plants \n " + prose + " \n Yes. \n No. \n See also \n Tools | Seeds | Soil \n ",
      "The garden planner\nshows where each plant\n  grows best. \n Next \n ",
  };
  for (const std::string& page : pages)
    EXPECT_EQ(summary(page), prose) << page;
}

TEST(Summary, PicksTheSentenceThatStandsForTheText) {
  EXPECT_EQ(summary("It was raining all day long on that day. Watering the plants keeps the plants "
                    "healthy. Plants need water, and watering plants in the evening saves water. "
                    "Somebody knocked at a door far away from here."),
            "Watering the plants keeps the plants healthy.");
}

TEST(Summary, KeepsTextOrder) {
  const std::string text =
      "One garden has many beds for vegetables. Two. The vegetables in the beds of a garden grow. "
      "Three.";
  EXPECT_EQ(
      summary(text, 2),
      "One garden has many beds for vegetables. The vegetables in the beds of a garden grow.");
  EXPECT_EQ(summary(text, 99), text);
}

TEST(Summary, KnowsOtherScripts) {
  EXPECT_EQ(summary("\u9996\u9875 \n \u5982\u524D\u6240\u8FF0\uFF0C\u8BE5\u8BA1\u5212\u4EE5\u6781"
                    "\u4E3A\u5206\u6563\u7684\u65B9\u5F0F\u8FDB\u884C\u3002 \n \u4E0B\u4E00\u9875"),
            "\u5982\u524D\u6240\u8FF0\uFF0C\u8BE5\u8BA1\u5212\u4EE5\u6781\u4E3A\u5206\u6563\u7684"
            "\u65B9\u5F0F\u8FDB\u884C\u3002");
  EXPECT_EQ(
      summary("\u00AB\u041E\u043D \u043F\u0440\u0438\u0448\u0451\u043B \u0434\u043E\u043C\u043E"
              "\u0439 \u043E\u0447\u0435\u043D\u044C \u043F\u043E\u0437\u0434\u043D\u043E.\u00BB"),
      "\u00AB\u041E\u043D \u043F\u0440\u0438\u0448\u0451\u043B \u0434\u043E\u043C\u043E\u0439 "
      "\u043E\u0447\u0435\u043D\u044C \u043F\u043E\u0437\u0434\u043D\u043E.\u00BB");
}

TEST(Summary, OddTexts) {
  for (const std::string_view text : {"", " \n ", "... !!! ---", "\xFF\xFE"}) {
    EXPECT_EQ(TSSummaryCreateWithString(text), nullptr) << text;
  }
  EXPECT_EQ(summary("One. Two.", 0), "(null)");
  EXPECT_EQ(TSSummaryCopySentenceSummaryString(nullptr, 1), std::nullopt);
  EXPECT_EQ(summary("word"), "word");
  EXPECT_EQ(summary("a\xFF"
                    "b"),
            "a\uFFFDb");
  EXPECT_EQ(summary(" a \t b\u00A0c. "), "a b c.");
}

TEST(Summary, LongSentencesAreShortened) {
  std::string words;
  for (int i = 0; i < 200; ++i)
    words += "word ";
  EXPECT_EQ(summary(words + ".").size(), std::string("word").size() * 100 + 99 + 3);
  std::string unbroken = "x";
  for (int i = 0; i < 400; ++i)
    unbroken += "\u00E9,";
  EXPECT_EQ(summary(unbroken), unbroken.substr(0, 499) + "\u2026");
}

TEST(Sentences, LineBreaksBetweenBlanksEndParagraphs) {
  const auto paragraphs = [](std::string_view text) {
    std::string joined;
    for (const std::string& paragraph : paragraphsOf(text))
      joined += paragraph + "|";
    return joined;
  };
  EXPECT_EQ(paragraphs("wrapped\nline \n Next block"), "wrapped line|Next block|");
  EXPECT_EQ(paragraphs("see this\n\nand this\r\n\r\nthen"), "see this|and this|then|");
  EXPECT_EQ(paragraphs("\n\n a\tb \n\n"), "a b|");
  EXPECT_EQ(paragraphs("a code \nword"), "a code word|");
}

TEST(Sentences, NoneStartsWithASemicolon) {
  SentenceSplitter splitter;
  splitter.reset("f(int, ...); Then more.");
  std::string_view sentence;
  ASSERT_TRUE(splitter.next(sentence));
  EXPECT_EQ(sentence.substr(0, 12), "f(int, ...);");
}

}  // namespace
}  // namespace quorvex
