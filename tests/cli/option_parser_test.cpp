#include "cli/option_parser.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "common/log.h"
#include "tests/cli/arguments.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::parse;
using test::printed;
using Words = std::vector<std::string>;

TEST(OptionParser, ShortAndLongFormsAgree) {
  for (const OptionDescription& option : optionDescriptions()) {
    const std::string_view letters = shortOptions;
    const std::size_t letter = letters.find(option.letter);
    ASSERT_NE(letter, std::string_view::npos) << option.longName;
    const bool shortTakesArgument = letters.substr(letter + 1).starts_with(':');
    EXPECT_EQ(shortTakesArgument, option.takesArgument && option.letter != 'r') << option.longName;
  }
  EXPECT_EQ(parse({"--list-min-term-length"}).options.listMode, ListMode::minTermLength);
}

TEST(OptionParser, TakesOrIgnoresArguments) {
  const auto format = [](const char* text) {
    return static_cast<int>(parse({"-I", "beacon", "-I", text}).options.indexFormat);
  };
  EXPECT_EQ(format("LSM"), 1);
  EXPECT_EQ(format("Beacon"), 2);
  EXPECT_EQ(format("lsm2"), 2);
  for (const char* ignored : {"1", "4", "0", "x", "", "-2", "99999999999999999999"}) {
    EXPECT_EQ(parse({"-m", ignored}).options.minimumTermLength, 1U) << ignored;
  }
  EXPECT_EQ(parse({"-m3", "-m", "9"}).options.minimumTermLength, 3U);
  EXPECT_EQ(parse({"-l", "de_AT", "-l", ""}).options.locale.identifier(), "de_AT");
  EXPECT_EQ(parse({"-f", "/a//b/../c/", "-f", ""}).options.indexFilePath, "/a/c");
  const std::string here = std::filesystem::current_path();
  EXPECT_EQ(parse({"-f", "./x.bchelpindex"}).options.indexFilePath, here + "/x.bchelpindex");
  EXPECT_EQ(parse({"-sxx", "-s", ""}).options.stopwordsArgument, "");
  EXPECT_EQ(parse({"dir", "-C", "x", "--", "-a"}).arguments, (Words{"dir", "x", "-a"}));
  EXPECT_TRUE(parse({"-1"}).options.oneByOne);
}

TEST(OptionParser, RemoteUrlComesWithTheLongFormOnly) {
  EXPECT_EQ(parse({"-r", "http://a/b"}).arguments, Words{"http://a/b"});
  const CommandLine both = parse({"--remote-url=http://a/b c", "-r", "--remote-url", "a b:"});
  EXPECT_EQ(both.options.remoteURL->absoluteString(), "http://a/b%20c");
}

TEST(OptionParser, CollectsPredicatesInOrder) {
  const Options options = parse({"-e", "a", "-i", "(", "-e", "\xff", "-e", "b"}).options;
  ASSERT_EQ(options.excludePredicates.size(), 2U);
  EXPECT_EQ(options.excludePredicates[1].pattern(), "b");
  ASSERT_EQ(options.includePredicates.size(), 1U);
  EXPECT_FALSE(options.includePredicates[0].evaluate("x").ok());
}

TEST(OptionParser, RejectsWhatItDoesNotKnow) {
  for (const Words& words : {Words{"-K"},
                             {"-R"},
                             {"-c"},
                             {"-t", "x"},
                             {"-z"},
                             {"-f"},
                             {"--list"},
                             {"--create=1"},
                             {"--nothing"}}) {
    testing::internal::CaptureStderr();  // getopt's own diagnostics
    EXPECT_TRUE(parse(words).options.badOption) << words.front();
    testing::internal::GetCapturedStderr();
  }
}

TEST(OptionParser, ActsWhileParsing) {
  EXPECT_EQ(printed(-1,
                    [] {
                      parse({"-vvvvvvv"});
                      EXPECT_EQ(logVerbosity(), 4);
                    }),
            "");
  EXPECT_EQ(printed(-1, [] { EXPECT_TRUE(parse({"-p"}, false).options.loweredPriority); }),
            "Could not lower process priority as expected.\n");

  const test::TemporaryFolder folder;
  folder.write("good.kvdoc", "<kvdoc><dict><key>PageData</key><dict/></dict></kvdoc>");
  folder.write("array.kvdoc", "<kvdoc><array/></kvdoc>");
  ::setenv("HOME", folder.path().c_str(), 1);
  const auto description = [](const Words& words) {
    return parse(words).options.externalDescription;
  };
  ASSERT_TRUE(description({"-x", "~/good.kvdoc"}));
  EXPECT_EQ(*description({"-x", "~/good.kvdoc"}), (Dictionary{{"PageData", Dictionary()}}));
  for (const char* bad : {"~/array.kvdoc", "/nowhere/x"}) {
    const std::string message = printed(-1, [&] {
      EXPECT_EQ(description({"-x", "~/good.kvdoc", "-x", bad}), nullptr);
    });
    EXPECT_EQ(message, std::string("Could not read specified external HelpBook description at ") +
                           bad + ".\n");
  }
}

}  // namespace
}  // namespace quorvex
