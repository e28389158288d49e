// Runs the built program as a user would.

#include <gtest/gtest.h>

#include "common/files.h"
#include "platform/bundle.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

using Words = std::vector<std::string>;

/// The exit status and what went to standard error.
std::pair<int, std::string> run(Words words) {
  words.insert(words.begin(), QUORVEX_PROGRAM);
  test::Ended ended = test::ProgramRun(".", words).end();
  return {ended.status, std::move(ended.errors)};
}

constexpr const char* versionText = "quorvex version 2.0 (68)\n";

TEST(Program, MessagesAndStatuses) {
  const test::TemporaryFolder folder;
  folder.write("file", "no index");
  const std::string file = folder.path() / "file";
  const std::string usage = run({"-h"}).second;
  EXPECT_TRUE(usage.starts_with(versionText + std::string("Usage: " QUORVEX_PROGRAM " -I [lsm|b")));
  const struct {
    Words words;
    int status;
    std::string message;
  } cases[] = {
      {{"-V"}, 5, versionText},
      {{"-K"}, 1, usage},
      {{"-C", file}, 6, "Not a directory: " + file + "\n"},
      {{"-F", "-f", file}, 4, "There was a problem unarchiving the index file.\n"},
      {{"-q"}, 1, std::string(QUORVEX_PROGRAM) + ": invalid option -- 'q'\n" + usage},
  };
  for (const auto& [words, status, message] : cases) {
    EXPECT_EQ(run(words), std::make_pair(status, message)) << testing::PrintToString(words);
  }
}

TEST(Program, FindsItsRecordUnderAnyName) {
  for (const char* name : {"quorvex", "/bin/sh", "/nowhere/quorvex", ""}) {
    const Words words{"bash", "-c", "exec -a \"$0\" \"$@\"", name, QUORVEX_PROGRAM, "-V"};
    EXPECT_EQ(test::ProgramRun(".", words).end().errors, versionText) << name;
  }
}

TEST(Program, FilesWithoutARecord) {
  const test::TemporaryFolder folder;
  const std::string program(readFile(QUORVEX_PROGRAM).value().bytes());
  for (const std::size_t size : {0U, 16U, 63U, 64U, 5000U}) {
    folder.write("cut", std::string_view(program).substr(0, size));
    EXPECT_FALSE(informationRecord(folder.path() / "cut")) << size;
  }
  EXPECT_FALSE(informationRecord("/proc/self/exe"));
}

}  // namespace
}  // namespace quorvex
