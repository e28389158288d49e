#include "text/tokenizer.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "common/unicode.h"
#include "text/word_segmenter.h"

namespace quorvex {
namespace {

constexpr std::string_view apostrophes = "'\u2019";

/// Terms joined with "|".
std::string terms(std::string_view text, std::string_view termCharacters = apostrophes) {
  Tokenizer tokenizer(termCharacters);
  tokenizer.reset(text);
  std::string found;
  for (Token token; tokenizer.next(token);)
    found.append(found.empty() ? "" : "|") += token.term;
  return found;
}

TEST(Tokenizer, CutsWordsOfManyLanguages) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {" \n\t.,;!? -- _ __ \u00B6 \u2026", ""},
      {"Hello, World!", "hello|world"},
      {"e-mail a/b x=1", "e|mail|a|b|x|1"},
      {"1,234.56 v1.2.3 3rd 0x1F", "1,234.56|v1.2.3|3rd|0x1f"},
      {"os.path.join(a,b) std::move foo.", "os.path.join|a|b|std|move|foo"},
      {"_private __init__ snake_case", "_private|__init__|snake_case"},
      {"@Override user@example.com", "override|user|example.com"},
      {"caf\u00E9 \u00DCBER Stra\u00DFe", "caf\u00E9|\u00FCber|strasse"},
      {"na\u0308ive cafe\u0301.", "na\u0308ive|cafe\u0301"},
      {"\u041F\u0440\u0438\u0432\u0435\u0442, \u039A\u03CC\u03C3\u03BC\u03B5",
       "\u043F\u0440\u0438\u0432\u0435\u0442|\u03BA\u03CC\u03C3\u03BC\u03B5"},
      {"\u05E6\u05D4\"\u05DC \u05E9\u05DC\u05D5\u05DD",
       "\u05E6\u05D4\"\u05DC|\u05E9\u05DC\u05D5\u05DD"},
      {"\u0645\u0631\u062D\u0628\u0627 1\u066B5", "\u0645\u0631\u062D\u0628\u0627|1\u066B5"},
      {"\u4E2D\u534E\u4EBA\u6C11\u5171\u548C\u56FD\u3002",
       "\u4E2D\u534E|\u4EBA\u6C11|\u5171\u548C\u56FD"},
      {"\u30D7\u30ED\u30B0\u30E9\u30E0\u3092\u66F8\u304F",
       "\u30D7\u30ED\u30B0\u30E9\u30E0|\u3092|\u66F8\u304F"},
      {"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35\u0E04\u0E23\u0E31\u0E1A",
       "\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35|\u0E04\u0E23\u0E31\u0E1A"},
      {"\uD55C\uAD6D\uC5B4 \uBB38\uC11C", "\uD55C\uAD6D\uC5B4|\uBB38\uC11C"},
      {"I \u2764\uFE0F \U0001F600 C", "i|c"},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(terms(text), expected) << text;
}

TEST(Tokenizer, JoinsWordsAtTermCharacters) {
  const std::vector<std::array<std::string, 3>> cases = {
      {"'", "don't 'quoted' dogs' 90's", "don't|quoted|dogs|90's"},
      {"'\u2019", "don\u2019t \u2019tis l'\u00E9t\u00E9 a\u2019'b",
       "don\u2019t|tis|l'\u00E9t\u00E9|a\u2019'b"},
      {"", "don't 90's", "don't|90|s"},
      {"-", "e-mail -x- a--b a- b", "e-mail|x|a--b|a|b"},
      {"_@", "_a_ a_@b user@host", "a|a_@b|user@host"},
      {"+#", "C++ c# a+b", "c|c|a+b"},
      {"-", "\u4E2D\u534E-\u4EBA\u6C11 x", "\u4E2D\u534E-\u4EBA\u6C11|x"},
      {"a \u00E9", "bab a cafe\u00E9", "bab|a|cafe\u00E9"},
  };
  for (const auto& [characters, text, expected] : cases) {
    EXPECT_EQ(terms(text, characters), expected) << text << " joined by " << characters;
  }
}

TEST(Tokenizer, AcceptsAnyBytes) {
  EXPECT_EQ(terms("a\xFF"
                  "b \xC3(c \xE4\xB8 d\xF0\x9F"),
            "a|b|c|d");
  EXPECT_EQ(terms(std::string("a\0b", 3)), "a|b");
  EXPECT_EQ(terms("x\xED\xA0\x80y \xC0\xAFz"), "x|y|z");
  EXPECT_EQ(terms(std::string(1000, '\x80')), "");
}

TEST(Tokenizer, LeavesOutOverlongTerms) {
  const std::string longest(maximumTermSize, 'x');
  EXPECT_EQ(terms("a " + longest + " b"), "a|" + longest + "|b");
  EXPECT_EQ(terms("a " + longest + "x b"), "a|b");
  EXPECT_EQ(terms(std::string(1U << 20U, 'Y') + " b"), "b");
  std::string joined;
  for (int i = 0; i < 200; ++i)
    joined += "a'";
  EXPECT_EQ(terms(joined + "a b"), "b");
}

TEST(Tokenizer, TellsWhereWordsStand) {
  const std::string text = "  The \u00C9t\u00E9's 'end'";
  Tokenizer tokenizer(apostrophes);
  tokenizer.reset(text);
  std::string words;
  for (Token token; tokenizer.next(token);) {
    words += text.substr(token.begin, token.end - token.begin) + "|";
  }
  EXPECT_EQ(words, "The|\u00C9t\u00E9's|end|");
}

std::vector<std::string> words(WordSegmenter& segmenter, std::string_view text) {
  segmenter.reset(text);
  std::vector<std::string> found;
  for (Word word; segmenter.next(word);)
    found.emplace_back(text.substr(word.begin, word.end - word.begin));
  return found;
}

/// Returns the words that ICU finds between ASCII white space and at signs.
std::vector<std::string> icuWords(icu::BreakIterator& iterator, std::string_view text) {
  std::vector<std::string> found;
  while (!text.empty()) {
    const std::size_t size = std::min(text.find_first_of(" \t\n\v\f\r@"), text.size());
    UErrorCode status = U_ZERO_ERROR;
    UText zone = UTEXT_INITIALIZER;
    utext_openUTF8(&zone, text.data(), static_cast<std::int64_t>(size), &status);
    iterator.setText(&zone, status);
    std::int32_t begin = iterator.first();
    for (std::int32_t end = iterator.next(); end != icu::BreakIterator::DONE;
         begin = std::exchange(end, iterator.next())) {
      std::string word(
          text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
      for (std::size_t position = 0; position < word.size();) {
        if (!isLetterOrDigit(nextCharacter(word, position))) continue;
        found.push_back(std::move(word));
        break;
      }
    }
    utext_close(&zone);
    text.remove_prefix(std::min(size + 1, text.size()));
  }
  return found;
}

/// Combines at random all pieces that can occur at a border between the paths.
std::string randomText(std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      "a",      "B",      "z9",     "7",      "0",         "_",      ".",      ",",
      "'",      "\u2019", ":",      ";",      "@",         "-",      "\"",     " ",
      "\n",     "\t",     "\r",     "\u00A0", "\u00AD",    "\u00B7", "\u00B6", "\u00E9",
      "\u00DF", "\u0130", "\u03A9", "\u0436", "\u0301",    "\u05D0", "\u0E01", "\u0E32",
      "\u4E2D", "\u6587", "\u3042", "\u30AB", "\uAC00",    "\u1100", "\u200D", "\u200B",
      "\u2028", "\u2044", "\u24B6", "\u2160", "\u2764",    "\uFEFF", "\xFF",   "\xC3",
      "\u0660", "\u203F", "\u02C2", "\u00AA", "\u00B2",    "\u0085", "\u2003", "\U0001F1E6",
      "\u037E", "\u0387", "\u05F4", "\u066C", "\U00010400"};
  static const std::vector<std::string> ofJapanese = {
      "\u4E2D",
      "\u6587",
      "\u3042",
      "\u30AB",
      "\u30FC",
      "\u3001",
      "\u3002",
      "\uFF0C",
      "\uFF0E",
      "\uFF1A",
      "\u3005",
      "\u3007",
      "a",
      "1",
      "_",
      " ",
      "\u30D7\u30ED\u30B0\u30E9\u30E0\u3092\u66F8\u304F\u4EBA\u6C11\u5171\u548C\u56FD"};
  std::uniform_int_distribution<std::size_t> length(0, 40);
  // Most of a text is plain or Japanese, so that complex characters meet such stretches.
  std::uniform_int_distribution<std::size_t> piece(0, pieces.size() * 3);
  const bool isJapanese = random() % 2 == 0;
  std::string text;
  for (std::size_t left = length(random); left > 0; --left) {
    const std::size_t i = piece(random);
    text += i < pieces.size() ? pieces[i]
            : isJapanese      ? ofJapanese[i % ofJapanese.size()]
                              : pieces[i % 16];
  }
  return text;
}

class Segmentation : public testing::Test {
 protected:
  void expectWordsOfIcu(std::string_view text, std::string_view name) {
    ASSERT_EQ(words(_segmenter, text), icuWords(*_iterator, text)) << name;
  }

 private:
  WordSegmenter _segmenter;
  UErrorCode _status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> _iterator{
      icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), _status)};
};

TEST_F(Segmentation, FastPathsGiveTheWordsOfIcu) {
  std::mt19937 random(20240601);
  for (int round = 0; round < 50000; ++round) {
    const std::string text = randomText(random);
    expectWordsOfIcu(text, text);
  }
}

std::vector<std::string> termList(Tokenizer& tokenizer, std::string_view text) {
  tokenizer.reset(text);
  std::vector<std::string> found;
  for (Token token; tokenizer.next(token);)
    found.emplace_back(token.term);
  return found;
}

TEST(Tokenizer, PlainTermsAndPartsAreThoseWithoutTermCharacters) {
  std::mt19937 random(20240602);
  Tokenizer loose("");
  for (const std::string_view characters : {apostrophes, std::string_view("-@_.")}) {
    Tokenizer tokenizer(characters);
    for (int round = 0; round < 15000; ++round) {
      const std::string text = randomText(random);
      const std::string before = randomText(random) + " ";
      const std::string whole = before + text;
      tokenizer.reset(whole);
      std::string terms;
      tokenizer.collectParts(before.size(), terms);
      for (Token token; tokenizer.next(token);)
        if (token.begin >= before.size() && token.isPlain) terms.append(token.term) += '\n';
      std::vector<std::string> found;
      for (std::size_t at = 0, end = 0; at < terms.size(); at = end + 1) {
        end = terms.find('\n', at);
        found.push_back(terms.substr(at, end - at));
      }
      std::vector<std::string> expected = termList(loose, text);
      std::ranges::sort(found);
      std::ranges::sort(expected);
      ASSERT_EQ(found, expected) << whole;
    }
  }
}

TEST(Tokenizer, TellsTextsThatAreCutAlikeAnywhere) {
  EXPECT_TRUE(isCutAlikeAnywhere(""));
  EXPECT_TRUE(isCutAlikeAnywhere(std::string(16'384, 'x')));
  EXPECT_FALSE(isCutAlikeAnywhere("a b " + std::string(17'000, 'x')));
  std::string words;
  while (words.size() < 100'000)
    words += "\u4E2D\u534E\u4EBA\u6C11@";
  EXPECT_TRUE(isCutAlikeAnywhere(words));
  EXPECT_FALSE(isCutAlikeAnywhere(words + std::string(17'000, '\xA0')));
}

TEST_F(Segmentation, EveryCharacterActsAsInIcu) {
  for (unsigned c = 1; c < 0x10000; ++c) {
    if (c == 0xFF9E || c == 0xFF9F) continue;  // letters that join white space before them
    std::string character;
    if (c < 0x80) {
      character = {static_cast<char>(c)};
    } else if (c < 0x800) {
      character = {static_cast<char>(0xC0 | (c >> 6U)), static_cast<char>(0x80 | (c & 63U))};
    } else {
      character = {static_cast<char>(0xE0 | (c >> 12U)),
                   static_cast<char>(0x80 | ((c >> 6U) & 63U)),
                   static_cast<char>(0x80 | (c & 63U))};
    }
    std::string text;
    for (const char* around :
         {"a|b", "1|2", " | ", "_|_", "|x", "1|y", "\u6587|\u5B57", "\u30AB|\u30BF"})
      text.append(around).replace(text.find('|'), 1, character);
    expectWordsOfIcu(text, std::to_string(c));
  }
}

TEST_F(Segmentation, LongTextsAreCutIntoZonesThatDoNotShow) {
  // Zones of both paths end inside this text, wherever their limits are.
  std::string text;
  for (int i = 0; text.size() < 300'000; ++i) {
    text += i % 97 == 0 ? "\u4E2D\u534E" : "word" + std::to_string(i);
    text += i % 5 == 0 ? "\n" : " ";
  }
  expectWordsOfIcu(text, "words");
}

TEST(Tokenizer, StretchesWithoutWhiteSpaceEnd) {
  // These take linear time only because overlong zones are cut.
  const std::size_t size = 2'000'000;
  EXPECT_EQ(terms(std::string(size, '.') + "\u4E2D"), "\u4E2D");
  std::string commas;
  while (commas.size() < size)
    commas += "ab,\u00AD,";
  WordSegmenter segmenter;
  EXPECT_NEAR(static_cast<double>(words(segmenter, commas).size()), size / 6.0, 100);
  EXPECT_EQ(terms(std::string(size, '\'') + "a"), "a");
}

}  // namespace
}  // namespace quorvex
