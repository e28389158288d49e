#include "view/assets/assets.h"

#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace quorvex::view {

namespace {

// The first thing that a pattern finds, for the message of a failed test.
std::string firstMatch(const Asset& asset, const char* pattern) {
  const std::string text(asset.bytes);
  std::smatch match;
  return std::regex_search(text, match, std::regex(pattern)) ? match.str() : "";
}

TEST(Assets, areWhatTheRulesSentWithThemAdmit) {
  std::size_t size = 0;
  for (const Asset& asset : assets()) {
    SCOPED_TRACE(asset.name);
    size += asset.bytes.size();
    EXPECT_FALSE(asset.type.empty());
    EXPECT_EQ(assetNamed(asset.name), &asset);
    EXPECT_EQ(firstMatch(asset, R"((https?:)?//(?!www\.w3\.org/2000/svg")[a-z0-9.-]+\.[a-z]+/)"),
              "");
    EXPECT_EQ(
        firstMatch(asset, R"(<[a-z][^>]*\s(on[a-z]+|style)\s*=|<style|<script(?! [^>]*src=))"), "");
    EXPECT_EQ(firstMatch(asset, R"(innerHTML|outerHTML|insertAdjacentHTML|\beval\()"), "");
  }
  EXPECT_LT(size, 60U * 1024);
  EXPECT_EQ(assetNamed("none.js"), nullptr);
}

TEST(Assets, leadOnlyToOneAnother) {
  const std::regex reference(R"re((?:src|href)="([^"?]+)"|from '\./([^']+)')re");
  std::set<std::string> used{"index.html", "page.js", "page.css"};
  for (const Asset& asset : assets()) {
    const std::string text(asset.bytes);
    for (std::sregex_iterator at(text.begin(), text.end(), reference), end; at != end; ++at) {
      const std::string name = (*at)[1].matched ? (*at)[1].str() : (*at)[2].str();
      EXPECT_NE(assetNamed(name), nullptr) << asset.name << ": " << name;
      used.insert(name);
    }
  }
  for (const Asset& asset : assets())
    EXPECT_TRUE(used.contains(std::string(asset.name))) << asset.name << " is never used";
}

}  // namespace

}  // namespace quorvex::view
