#include "cli/option_parser.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "common/locale.h"
#include "common/log.h"
#include "tests/cli/arguments.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::parse;
using test::printed;
using Words = std::vector<std::string>;

TEST(OptionParser, TakesOrIgnoresArguments) {
  const auto format = [](const char* text) {
    return static_cast<int>(parse({"-I", "beacon", "-I", text}).options.indexFormat);
  };
  EXPECT_EQ(format("LSM"), 1);
  EXPECT_EQ(format("Beacon"), 2);
  for (const char* ignored : {"1", "4", "0", "x", "", "-2", "99999999999999999999"}) {
    EXPECT_EQ(parse({"-m", ignored}).options.minimumTermLength, 1U) << ignored;
  }
  EXPECT_EQ(parse({"-l", "de_AT", "-l", ""}).options.locale.identifier(), "de_AT");
  EXPECT_EQ(parse({"-f", "/a//b/../c/", "-f", ""}).options.indexFilePath, "/a/c");
  const std::string here = std::filesystem::current_path();
  EXPECT_EQ(parse({"-f", "./x.bchelpindex"}).options.indexFilePath, here + "/x.bchelpindex");
  EXPECT_EQ(parse({"dir", "-C", "x", "--", "-a"}).arguments, (Words{"dir", "x", "-a"}));
  EXPECT_TRUE(parse({"-1"}).options.oneByOne);
}

TEST(OptionParser, RemoteUrlComesWithTheLongFormOnly) {
  EXPECT_EQ(parse({"-r", "http://a/b"}).arguments, Words{"http://a/b"});
  const CommandLine both = parse({"--remote-url=http://a/b c", "-r", "--remote-url", "a b:"});
  EXPECT_EQ(both.options.remoteURL->absoluteString(), "http://a/b%20c");
  EXPECT_EQ(parse({"--remote-url", ""}).options.remoteURL->absoluteString(), "");
}

TEST(OptionParser, EmptyVariablesNameNoLocale) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the first locale found is kept by the process
  const auto findLocale = [] {
    for (const auto& [name, value] :
         {std::pair{"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", "de_AT.UTF-8"}})
      ::setenv(name, value, 1);
    unsetEmptyLocaleVariables();
    std::exit(parse({}).options.locale.identifier() == "de_AT" ? 0 : 1);
  };
  EXPECT_EXIT(findLocale(), testing::ExitedWithCode(0), "");
}

TEST(OptionParser, CollectsPredicatesInOrder) {
  const Options options = parse({"-e", "a", "-i", "(", "-e", "\xff", "-e", "b"}).options;
  ASSERT_EQ(options.excludePredicates.size(), 2U);
  EXPECT_TRUE(*options.excludePredicates[1].evaluate("B"));
  ASSERT_EQ(options.includePredicates.size(), 1U);
  EXPECT_FALSE(options.includePredicates[0].evaluate("x").ok());
}

TEST(OptionParser, RejectsWhatItDoesNotKnow) {
  for (const char* word : {"-K", "-R", "-c", "-tx", "-z", "-f", "--list", "--create=1", "--no"}) {
    testing::internal::CaptureStderr();  // getopt's own diagnostics
    EXPECT_TRUE(parse({word}).options.badOption) << word;
    testing::internal::GetCapturedStderr();
  }
}

TEST(OptionParser, ActsWhileParsing) {
  printed(-1, [] { EXPECT_EQ((parse({"-vvvvvvv"}), logVerbosity()), 4); });
  EXPECT_EQ(printed(-1, [] { EXPECT_TRUE(parse({"-p"}, false).options.loweredPriority); }),
            "Could not lower process priority as expected.\n");

  const test::TemporaryFolder folder;
  folder.write("good", "<kvdoc><dict><key>PageData</key><dict/></dict></kvdoc>");
  folder.write("array", "<kvdoc><array/></kvdoc>");
  ::setenv("HOME", folder.path().c_str(), 1);
  const auto description = [](const Words& words) {
    return parse(words).options.externalDescription;
  };
  ASSERT_TRUE(description({"-x", "~/good"}));
  EXPECT_EQ(*description({"-x", "~/good"}), (Dictionary{{"PageData", Dictionary()}}));
  const auto bad = [&] { EXPECT_FALSE(description({"-x", "~/good", "-x", "~/array"})); };
  EXPECT_EQ(printed(-1, bad),
            "Could not read specified external HelpBook description at ~/array.\n");
}

}  // namespace
}  // namespace quorvex
