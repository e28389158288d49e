#include "generate/versions_record.h"

#include <gtest/gtest.h>

#include "platform/bundle.h"

namespace quorvex {
namespace {

TEST(VersionsRecord, EndsAtTheFirstMissingVersion) {
  EXPECT_EQ(versionsDictionary({}), (Dictionary{{"TSI_QUORVEX", "0"}}));
  SoftwareVersions versions{.program = "68",
                            .systemBuild = "12",
                            .substrate = "2.36",
                            .bedrock = {},
                            .textSift = {},
                            .textSiftSource = {}};
  Dictionary expected{
      {"TSI_QUORVEX", "68"}, {"TSI_SYSTEM_BUILD", "12"}, {"TSI_SUBSTRATE", 2}, {"TSI_BEDROCK", 0}};
  EXPECT_EQ(versionsDictionary(versions), expected);
  versions.textSift = "1.0";
  expected.emplace("TSI_TEXT_SIFT", "1.0");
  EXPECT_EQ(versionsDictionary(versions), expected);
  for (const auto& [source, number] : {std::pair<Value, int>{"1234567", 123},
                                       {"-15000", -1},
                                       {1234567, 123},
                                       {-15000.0, -1},
                                       {"x", 0}}) {
    versions.textSiftSource = source;
    EXPECT_EQ(versionsDictionary(versions).at("TSI_TEXT_SIFT"), Value(number));
  }
}

TEST(VersionsRecord, OfThisSystem) {
  // This test program carries no information record.
  const Dictionary record = versionsDictionary();
  EXPECT_EQ(record.size(), 5U);
  EXPECT_EQ(record.at("TSI_QUORVEX"), Value("0"));
  EXPECT_GT(*record.at("TSI_BEDROCK").integer(), 50);
  EXPECT_EQ(record.at("TSI_TEXT_SIFT").kind(), Value::Kind::string);
}

TEST(Bundle, IntegerValues) {
  const std::pair<const char*, std::int32_t> cases[] = {{"", 0},
                                                        {"x1", 0},
                                                        {" 72.1", 72},
                                                        {"-15000", -15000},
                                                        {"+3", 3},
                                                        {"99999999999999999999", 2147483647},
                                                        {"-99999999999", -2147483647 - 1}};
  for (const auto& [text, number] : cases)
    EXPECT_EQ(integerValue(text), number) << text;
}

TEST(Bundle, BuildOfOsRelease) {
  EXPECT_EQ(buildOfOsRelease("NAME=x\nVERSION_ID=\"12\"\n"), "12");
  EXPECT_EQ(buildOfOsRelease("BUILD_ID='a b'\r\nVERSION_ID=12"), "a b");
  EXPECT_EQ(buildOfOsRelease("VERSION_ID=a\\ b\nBUILD_ID=\n#BUILD_ID=9\n=\n"), "a b");
  EXPECT_EQ(buildOfOsRelease("NAME\nVERSION=12\n"), std::nullopt);
}

}  // namespace
}  // namespace quorvex
