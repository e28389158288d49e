// Runs the built program as a user would.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/files.h"
#include "platform/bundle.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using Words = std::vector<std::string>;

/// The exit status and what went to standard error.
std::pair<int, std::string> run(const Words& words, const std::string& name = QUORVEX_PROGRAM) {
  const test::TemporaryFolder folder;
  const std::string output = folder.path() / "error";
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, output.c_str(), O_WRONLY | O_CREAT,
                                     0600);
  std::vector<char*> arguments{const_cast<char*>(name.c_str())};
  for (const std::string& word : words)
    arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t process = 0;
  int status = -1;
  if (::posix_spawn(&process, QUORVEX_PROGRAM, &actions, nullptr, arguments.data(), environ) == 0) {
    ::waitpid(process, &status, 0);
  }
  ::posix_spawn_file_actions_destroy(&actions);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -status,
          std::string(readFile(output).value().bytes())};
}

constexpr const char* versionText = "quorvex version 2.0 (68)\n";
constexpr const char* modeText =
    "Please choose a mode. (You probably want to create an index using -C.)\n";

TEST(Program, MessagesAndStatuses) {
  const test::TemporaryFolder folder;
  folder.write("file", "no index");
  const std::string directory = folder.path();
  const std::string file = directory + "/file";
  const std::string usage = run({"-h"}).second;
  EXPECT_TRUE(usage.starts_with(versionText + std::string("Usage: " QUORVEX_PROGRAM " -I [lsm|b")));
  const struct {
    Words words;
    int status;
    std::string message;
  } cases[] = {
      {{}, 5, modeText},
      {{"-V"}, 5, versionText},
      {{"-V", "-C"}, 0, versionText},
      {{"-C"}, 2, usage},
      {{"-C", "-F", "-f", "x", directory}, 5, modeText},
      {{"-K"}, 1, usage},
      {{"-L", directory}, 5, modeText},
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
    EXPECT_EQ(run({"-V"}, name).second, versionText) << name;
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
