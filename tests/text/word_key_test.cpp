#include "text/word_key.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts)
    all.append(all.empty() ? "" : "|") += text;
  return all;
}

TEST(WordKey, IsTheSameHoweverAWordIsWritten) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"S\u00E9curit\u00E9", "securite"},
      {"cafe\u0301", "cafe"},
      {"gr\u00F6sse", "grosse|groesse"},
      {"Stra\u00DFe", "strasse"},
      {"\u00C5rsm\u00F8te", "arsmote|aarsmoete"},
      {"\u0141\u00F3d\u017A \u0111\u1EB7ng", "lodzdang"},
      {"I\u015E\u0131k", "isik"},
      {"\u03A9\u03BC\u03AD\u03B3\u03B1\u03C2", "\u03C9\u03BC\u03B5\u03B3\u03B1\u03C3"},
      {"\u0451\u043B\u043A\u0430 \u0438\u0306\u0430\u0301\u0457",
       "\u0435\u043B\u043A\u0430\u0439\u0430\u0457"},
      {"\u0623\u064E\u0628\u0640", "\u0627\u0628"},
      {"\u05E9\u05C1\u05B8", "\u05E9"},
      {"\u0915\u093F\u0902", "\u0915\u093F\u0902"},
      {"\u0E17\u0E35\u0E48", "\u0E17\u0E35\u0E48"},
      {"\uD55C\uAD6D", "\uD55C\uAD6D"},
      {"\u30B3\u30F3\u30D4\u30E5\u30FC\u30BF\u30FC", "\u30B3\u30F3\u30D4\u30E6\u30BF"},
      {"\uFF8C\uFF67\uFF72\uFF99 \uFF76\uFF9E \uFF21",
       "\u30D5\u30A2\u30A4\u30EB\u30AC"
       "a"},
      {"\u304C\u3063\u3096", "\u304C\u3064\u3051"},
      {"\u8CC7\u6599\u5EAB \u85B4\u82E7", "\u8D44\u6599\u5E93\u82CE\u82CE"},
      {"__std::Lower_bound'", "stdlowerbound"},
      {"3.11 x86-64 1_000 c++", "3.11x86.64.1.000c"},
      {"", ""},
      {"-- \u30FC", ""},
      {"\xFF"
       "a\xE3\x81_\u0301",
       "a"},
  };
  for (const auto& [word, expected] : cases)
    EXPECT_EQ(joined(keysOfWord(word)), expected) << word;
  EXPECT_EQ(joined(keysOfWord(std::string(1000, 'a'))), "");
}

TEST(WordKey, PartsAreThoseThatAReaderSees) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"gather", "gather"},
      {"asyncio.gather", "asyncio|gather"},
      {"_mm256_mask", "mm|256|mask"},
      {"ThreadPoolExecutor", "Thread|Pool|Executor"},
      {"HTTPServer", "HTTP|Server"},
      {"getURLs2 iOS", "get|URLs|2|i|OS"},
      {"parseURLstring", "parse|UR|Lstring"},
      {"\u00DCberL\u00E4nge", "\u00DCber|L\u00E4nge"},
      {"l'e\u0301cole", "l|e\u0301cole"},
      {"\u30D5\u30A1\u30A4\u30EB\u540D2", "\u30D5\u30A1\u30A4\u30EB\u540D|2"},
      {"a1b2c3d4e5f6a7b8", "a|1|b|2|c|3|d|4|e|5|f|6|a|7|b|8"},
      {"a1b2c3d4e5f6a7b8c", ""},
      {std::string(60, 'a') + ".bcd", std::string(60, 'a') + "|bcd"},
      {std::string(60, 'a') + ".bcde", ""},
      {"\xFF:\x80", ""},
  };
  for (const auto& [word, expected] : cases)
    EXPECT_EQ(joined(partsOfWord(word)), expected) << word;
}

}  // namespace
}  // namespace quorvex
