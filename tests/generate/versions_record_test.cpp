#include "generate/versions_record.h"

#include <gtest/gtest.h>

#include "platform/bundle.h"

namespace quorvex {
namespace {

TEST(VersionsRecord, LeavesOutWhatIsMissing) {
  EXPECT_EQ(versionsDictionary({}), (Dictionary{{"TSI_QUORVEX", "0"}}));
  SoftwareVersions versions;
  versions.program = "68";
  versions.systemBuild = "12";
  versions.substrate = "2.36";
  Dictionary expected{
      {"TSI_QUORVEX", "68"}, {"TSI_SYSTEM_BUILD", "12"}, {"TSI_SUBSTRATE", 2}, {"TSI_BEDROCK", 0}};
  EXPECT_EQ(versionsDictionary(versions), expected);
  versions.textSift = "1.0";
  expected.emplace("TSI_TEXT_SIFT", "1.0");
  EXPECT_EQ(versionsDictionary(versions), expected);
  const auto fromSource = [&](const Value& source) {
    versions.textSiftSource = source;
    return *versionsDictionary(versions).at("TSI_TEXT_SIFT").integer();
  };
  EXPECT_EQ(fromSource("1234567"), 123);
  EXPECT_EQ(fromSource(-15000), -1);
  EXPECT_EQ(fromSource("x"), 0);
}

TEST(VersionsRecord, OfThisSystem) {
  // This test program has no information record.
  const Dictionary record = versionsDictionary();
  EXPECT_EQ(record.size(), 5U);
  EXPECT_EQ(record.at("TSI_QUORVEX"), Value("0"));
  EXPECT_GT(*record.at("TSI_BEDROCK").integer(), 50);
  EXPECT_EQ(record.at("TSI_TEXT_SIFT").kind(), Value::Kind::string);
}

TEST(Bundle, IntegerValues) {
  EXPECT_EQ(integerValue("x1"), 0);
  EXPECT_EQ(integerValue("99999999999999999999"), 2147483647);
  EXPECT_EQ(integerValue("-99999999999"), -2147483647 - 1);
}

TEST(Bundle, BuildOfOsRelease) {
  EXPECT_EQ(buildOfOsRelease("NAME=x\nVERSION_ID=\"12\"\n"), "12");
  EXPECT_EQ(buildOfOsRelease("BUILD_ID='a b'\r\nVERSION_ID=12"), "a b");
  EXPECT_EQ(buildOfOsRelease("VERSION_ID=a\\ b\nBUILD_ID=\n#BUILD_ID=9\n=\n"), "a b");
  EXPECT_EQ(buildOfOsRelease("NAME\nVERSION=12\n"), std::nullopt);
}

}  // namespace
}  // namespace quorvex
