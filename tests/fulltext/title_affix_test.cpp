#include "fulltext/format/title_affix.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

TEST(TitleAffix, CutsWhatMostTitlesShare) {
  struct Case {
    std::string before, after;  ///< around each title
    std::string name;           ///< of what is shared; empty: nothing is cut
  };
  const std::vector<Case> cases = {
      {"", " - pumps.example", "pumps.example"},
      {"", " \u2014 On: pumps \u2014 Pumps 3.2 documentation",
       "On: pumps \u2014 Pumps 3.2 documentation"},
      {"", " (Pumps (version 7.3))", "Pumps (version 7.3)"},
      {"Pumps: Documentation: 15: ", "", "Pumps: Documentation: 15"},
      {"Pumps | ", " \u00BB Manual", "Manual"},
      {"", "\uFF5C\u30DD\u30F3\u30D7", "\u30DD\u30F3\u30D7"},
      {"", "\uFF08\u6CF5\uFF09", "\u6CF5"},
      {"\u6CF5\uFF1A", "", "\u6CF5"},
      {"", "\u200F \u2013 \u200F\u05DE\u05E9\u05D0\u05D1\u05D4", "\u05DE\u05E9\u05D0\u05D1\u05D4"},
      {"", "(1)", ""},
      {"std::", "", ""},
      {"Chapter ", "", ""},
      {"(Pumps: ", ")", ""},
  };
  for (const Case& each : cases) {
    std::vector<std::string> titles;
    for (const char* own : {"Oil", "Air (C) - hot", "Lamp", "Lamps", "Oil"})
      titles.push_back(each.before + own + each.after);
    const TitleAffix affix(std::vector<std::string_view>(titles.begin(), titles.end()));
    EXPECT_EQ(affix.name(), each.name);
    EXPECT_EQ(affix.cut(titles[0]), each.name.empty() ? titles[0] : "Oil");
    EXPECT_EQ(affix.cut(titles[1]), each.name.empty() ? titles[1] : "Air (C) - hot");
    for (const std::string& whole : {each.after, each.name, std::string("Other")})
      EXPECT_EQ(affix.cut(whole), whole);
  }
}

TEST(TitleAffix, KeepsWhatTellsThePage) {
  using Titles = std::vector<std::string_view>;
  for (const Titles& titles :
       {Titles{}, Titles{"A - B", "C - B", "D - B"},
        Titles{"A - B", "A - B", "A - B", "A - B", "A - B"},
        Titles{"A - X", "B - X", "C - X", "D - X", "E - X", "F", "G", "H", "I", "J"}}) {
    const TitleAffix affix(titles);
    EXPECT_EQ(affix.name(), "");
    for (const std::string_view title : titles)
      EXPECT_EQ(affix.cut(title), title);
  }
  // Some have more in common; the book is what all have in common.
  const TitleAffix nested(Titles{"A - B - X", "C - B - X", "D - B - X", "E - B - X", "F - B - X",
                                 "G - X", "H - X", "", ""});
  EXPECT_EQ(nested.cut("A - B - X"), "A");
  EXPECT_EQ(nested.cut("G - X"), "G");
  EXPECT_EQ(nested.name(), "X");
}

}  // namespace
}  // namespace quorvex
