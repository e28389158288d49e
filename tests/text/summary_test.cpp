#include <gtest/gtest.h>

#include "platform/textsift.h"
#include "text/sentences.h"

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
      "Home\u2029Next\u2029Previous\u2029Index\u2029" + prose,
      "Home \u00BB Docs \u00BB Guide \u00BB Plants\u2029" + prose + "\u2029\u00A9 2020 Example",
      "Welcome!\u2029Contents\u20291. Beds\u20292. Tools\u2029" + prose,
      "Previous Up Chapter 5. Garden Planner 5.1.\u2029" + prose,
      "\n Plants\u2029" + prose +
          "\u2029Yes.\u2029No.\u2029See also\u2029Tools | Seeds | Soil\u2029",
      "The garden planner\n\nshows where each plant \n grows best.\u2029Next\u2029",
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
  EXPECT_EQ(
      summary("\u9996\u9875\u2029\u5982\u524D\u6240\u8FF0\uFF0C\u8BE5\u8BA1\u5212\u4EE5\u6781"
              "\u4E3A\u5206\u6563\u7684\u65B9\u5F0F\u8FDB\u884C\u3002\u2029\u4E0B\u4E00\u9875"),
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

TEST(Summary, LongSentencesAreCutBetweenWords) {
  std::string words;
  for (int i = 0; i < 200; ++i)
    words += "word ";
  EXPECT_EQ(summary(words + "."), words.substr(0, 499) + "\u2026");
  std::string japanese;
  for (int i = 0; i < 200; ++i)
    japanese += "\u65E5\u672C\u8A9E";  // one word
  EXPECT_EQ(summary(japanese.substr(0, 801)), japanese.substr(0, 801));
  EXPECT_EQ(summary(japanese), japanese.substr(0, std::size_t{3} * 498) + "\u2026");
  std::string unbroken;
  for (int i = 0; i < 600; ++i)
    unbroken += "e\u0301";
  EXPECT_EQ(summary(unbroken + " word"), unbroken.substr(0, std::size_t{3} * 250) + "\u2026");
  // The sentence at the cut of a long text is dropped.
  const std::string fill(16'350, 'X');
  EXPECT_EQ(summary("Here it is short. " + fill + " and here it is cut off in a whole sentence."),
            "Here it is short.");
}

TEST(Sentences, EndWhereTheyEnd) {
  const struct {
    const char* text;
    std::vector<std::size_t> starts;
    const char* sentences;
  } cases[] = {
      {"wrapped\nline\n \nand more", {}, "wrapped line and more|"},
      {" a\tb \u2029c\u2029 ", {}, "a b|c|"},
      {"One Two. Three", {4, 8}, "One|Two.|Three|"},
      {"f(int, ...); Then more. End", {}, "f(int, ...); Then more.|End|"},
      {"(Of people!) and (as of 2!) x != 3 is so! Really?",
       {},
       "(Of people!) and (as of 2!) x != 3 is so!|Really?|"},
      {"\u3042\u308B\u3002\u300C\u3044\u300D\u3002",
       {},
       "\u3042\u308B\u3002|\u300C\u3044\u300D\u3002|"},
      {"Dr. No met Mr. B. He left. See (e.g. Figure 2, cf. Table 3).",
       {},
       "Dr. No met Mr. B.|He left.|See (e.g. Figure 2, cf. Table 3).|"},
      {"Das ist z. B. Wasser, d.h. Eis, bzw. Dampf. Nr. 5 Nein, no. Ja.",
       {},
       "Das ist z. B. Wasser, d.h. Eis, bzw. Dampf.|Nr. 5 Nein, no.|Ja.|"},
      {"J. R. R. Tolkien of the U.S. Army. Plan B. It is 5 p.m. Go, vs.",
       {},
       "J. R. R. Tolkien of the U.S. Army.|Plan B.|It is 5 p.m.|Go, vs.|"},
  };
  for (const auto& [text, starts, expected] : cases) {
    std::string found;
    SentenceSplitter splitter;
    for (const std::string& paragraph : paragraphsOf(text, starts)) {
      splitter.reset(paragraph);
      for (std::string_view sentence; splitter.next(sentence);)
        found.append(sentence) += '|';
    }
    EXPECT_EQ(found, expected);
  }
}

}  // namespace
}  // namespace quorvex
