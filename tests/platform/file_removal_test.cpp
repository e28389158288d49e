#include "platform/file_removal.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;

TEST(FileRemovalTest, RefusesPathsThatNameNoOneItem) {
  for (const char* refused : {"", "relative", "~/Library", "/", "//", "/tmp/.."}) {
    EXPECT_FALSE(removeItem(refused).ok()) << refused;
  }
}

TEST(FileRemovalTest, DepthAndNumberAreNoObstacle) {
  const test::TemporaryFolder folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  fs::create_directory("top");
  fs::current_path("top");
  for (int i = 0; i < 1100; ++i) {  // more levels than open files, a longer path than any may be
    fs::create_directory("folder");
    EXPECT_EQ(::symlink("..", "link"), 0);
    ASSERT_EQ(::chdir("folder"), 0);
  }
  fs::current_path(before);
  EXPECT_TRUE(removeItem(folder.path() / "top").ok());
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace quorvex
