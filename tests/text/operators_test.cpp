#include "text/operators.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

std::string operatorsOf(std::string_view text) {
  std::string list;
  for (std::size_t position = 0;;) {
    const std::string_view found = nextOperator(text, position, text.size());
    if (found.empty()) return list;
    list.append(list.empty() ? "" : " ").append(found);
  }
}

TEST(Operators, AreSignsOfProgramCode) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"a ->> 'b'", "->>"},
      {"x:=1; y|=2", ":= |="},
      {"?", "?"},
      {"the ? operator, f()?;", "? ?"},
      {"Why? Ask (or not!). \"Well?\"", ""},
      {"1..=5 [a..b] main...topic HEAD~2", "..= .. ... ~"},
      {"And so on... e.g. well-known, a.b, a:b, /usr/lib, say: no", ""},
      {"50% a@b.c", ""},
      {"5 % 3 @decorator {% url %}", "% @ % %"},
      {"--clean i-- --", "-- --"},
      {"operator[] operator() a[] f()", "[] ()"},
      {"operator<<,>>(x) operator->.", "<< >> ->"},
      {"<from>..<to> a>=b <T>::of", "< .. > >= < ::"},
      {"===== ---- **** a***b", "***"},
      {"<=>*&|^~ <=>*&|^~!", "<=>*&|^~"},  // eight signs at most
      {"\xC3\xA9->\xE2\x80\x94 \xFF=", "-> ="},
      {"(", ""},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(operatorsOf(text), expected) << text;
}

}  // namespace
}  // namespace quorvex
