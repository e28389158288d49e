#include "platform/file_removal.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;

TEST(FileRemovalTest, LinksGoAndWhatTheyPointToStays) {
  const test::TemporaryFolder folder;
  const std::string base = folder.path().string() + "/";
  folder.write("kept/file", "x");
  folder.write("tree/sub/file", "x");
  fs::create_symlink("kept", base + "link");
  fs::create_symlink("nowhere", base + "dangling");
  fs::create_symlink(base + "kept", base + "tree/sub/inner");
  for (const char* item : {"link/", "dangling", "tree//"}) {
    EXPECT_TRUE(itemExists(base + item)) << item;
    EXPECT_TRUE(removeItem(base + item).ok()) << item;
    EXPECT_FALSE(itemExists(base + item)) << item;
    EXPECT_TRUE(removeItem(base + item).ok()) << item;
  }
  EXPECT_TRUE(fs::exists(base + "kept/file"));
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
    ::symlink("..", "link");
    ASSERT_EQ(::chdir("folder"), 0);
  }
  fs::current_path(before);
  EXPECT_TRUE(removeItem(folder.path() / "top").ok());
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace quorvex
