#include "cli/entry_routine.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/cli/arguments.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using Words = std::vector<std::string>;

/// A run's actions, messages and status in a line: "create /folder; 0".
std::string outcomeOf(const Words& words) {
  std::string done;
  const Collaborators collaborators{
      .lowerPriority = [] { return true; },
      .purgeCaches = [&done] { done += "purge; "; },
      .create =
          [&done](const Options& options, const std::string& path) {
            if (options.oneByOne) throw std::bad_alloc();
            done += "create " + path + "; ";
          },
      .readIndexFile = [](const std::string& path) -> std::optional<Dictionary> {
        if (path != "/index") return std::nullopt;
        return Dictionary();
      },
      .list =
          [&done](const Dictionary&, ListMode mode, bool verbose, IndexFormat format) {
            if (mode == ListMode::files) throw std::bad_alloc();
            done += "list " + std::to_string(static_cast<int>(mode)) + (verbose ? "v " : " ") +
                    std::to_string(static_cast<int>(format)) + "; ";
            return okStatus();
          },
  };
  testing::internal::CaptureStderr();
  const int status = runCommandLine(test::parse(words), collaborators);
  std::string said = testing::internal::GetCapturedStderr();
  if (said.find("Usage: quorvex -I") != std::string::npos) said = "usage; ";
  if (said.ends_with('\n')) said.replace(said.size() - 1, 1, "; ");
  return done + said + std::to_string(status);
}

TEST(Entry, DecidesTheMode) {
  const std::string path = std::getenv("PATH");
  ::setenv("PATH", "/none", 1);  // an installed program may have another version
  const test::TemporaryFolder folder;
  std::filesystem::create_directory_symlink(".", folder.path() / "link");
  const std::string directory = std::filesystem::canonical(folder.path());
  const std::string link = directory + "/link";
  const std::string choose =
      "Please choose a mode. (You probably want to create an index using -C.); 5";
  const struct {
    Words words;
    std::string outcome;
  } cases[] = {
      {{"-h", "-C", directory}, "usage; 2"},
      {{"-V", "-h", "-C", "x", "x"}, "quorvex version err (err); 0"},
      {{"-P"}, "purge; 5"},
      {{"-P", "-V", "-C"}, "purge; 0"},
      {{"-C", directory}, "create " + directory + "; 0"},
      {{"-C", "-1", directory}, "Not enough memory; 0"},
      {{"-F", "-f", "/index", "-Ilsm"}, "Not enough memory; 4"},
      {{"-C", "-L", link}, "create " + directory + "; 0"},
      {{"-C", "~nobody-here/x"}, "Not a directory: ~nobody-here/x; 6"},
      {{"-C", "-F", "-f", "/index", directory}, choose},
      {{"-L", "-F", directory}, "create " + directory + "; 0"},
      {{"-F"}, "usage; 2"},
      {{"-F", "-f", "/index"}, "Index format no longer supported.; 0"},
      {{"-A", "-S", "-v", "-f", "/index", "-Ibeacon", "x"}, "list 8v 2; 0"},
      {{"-F", "-f", "/none", "-Ilsm"}, "There was a problem unarchiving the index file.; 4"},
  };
  for (const auto& [words, outcome] : cases) {
    EXPECT_EQ(outcomeOf(words), outcome) << testing::PrintToString(words);
  }
  ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace quorvex
