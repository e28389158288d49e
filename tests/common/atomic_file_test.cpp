#include "common/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;

class AtomicFiles : public testing::Test {
 protected:
  static bool put(const fs::path& path, std::string_view bytes) {
    AtomicFile file(path);
    return file.open() && file.write(bytes) && file.commit();
  }
  std::string contents(const char* name) const {
    const Result<Data> data = readFile(folder.path() / name);
    return data ? std::string(data->bytes()) : "-";
  }
  std::ptrdiff_t files() const {
    return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
  }

  test::TemporaryFolder folder;
};

TEST_F(AtomicFiles, ReplaceAndKeepPermissions) {
  const mode_t before = ::umask(027);
  EXPECT_TRUE(put(folder.path() / "new", "one"));
  ::umask(before);
  folder.write("old", "before");
  fs::permissions(folder.path() / "old", fs::perms(0604));
  EXPECT_TRUE(put(folder.path() / "old", "two"));
  EXPECT_EQ(contents("new") + contents("old"), "onetwo");
  EXPECT_EQ(fs::status(folder.path() / "new").permissions(), fs::perms(0640));
  EXPECT_EQ(fs::status(folder.path() / "old").permissions(), fs::perms(0604));
  EXPECT_EQ(files(), 2);
}

TEST_F(AtomicFiles, LinksStayAndTheirTargetsAreReplaced) {
  fs::create_directory(folder.path() / "sub");
  fs::create_symlink("sub/target", folder.path() / "inner");
  fs::create_symlink("inner", folder.path() / "link");
  fs::create_symlink("self", folder.path() / "self");
  EXPECT_TRUE(put(folder.path() / "link", "first"));  // dangling until now
  EXPECT_TRUE(put(folder.path() / "link", "second"));
  EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
  EXPECT_EQ(contents("sub/target"), "second");
  EXPECT_FALSE(put(folder.path() / "self", "x"));
}

TEST_F(AtomicFiles, StrangersLinksAreNotFollowed) {
  if (::geteuid() != 0) GTEST_SKIP() << "Only the administrator makes links of others";
  constexpr uid_t stranger = 65534;
  constexpr uid_t neighbour = 65533;
  const struct {
    unsigned mode;
    uid_t folderOwner;
    uid_t linkOwner;
    bool follows;
  } cases[] = {{01777, 0, stranger, false},       {01777, 0, 0, true},
               {01777, stranger, stranger, true}, {01777, neighbour, stranger, false},
               {01777, neighbour, 0, true},       {0777, 0, stranger, true},
               {01775, 0, stranger, true}};
  for (const auto& each : cases) {
    const test::TemporaryFolder shared;
    folder.write("target", "before");
    fs::create_symlink(folder.path() / "target", shared.path() / "link");
    fs::create_symlink(shared.path() / "link", shared.path() / "first");  // the user's own
    ASSERT_EQ(::lchown((shared.path() / "link").c_str(), each.linkOwner, each.linkOwner), 0);
    ASSERT_EQ(::chown(shared.path().c_str(), each.folderOwner, each.folderOwner), 0);
    fs::permissions(shared.path(), fs::perms(each.mode));
    const auto write = [&] { EXPECT_EQ(put(shared.path() / "first", "after"), each.follows); };
    EXPECT_EQ(test::printed(1, write).empty(), each.follows) << each.mode;
    EXPECT_EQ(contents("target"), each.follows ? "after" : "before");
  }
}

TEST_F(AtomicFiles, FailuresLeaveNothingBehind) {
  folder.write("old", "before");
  {
    AtomicFile abandoned(folder.path() / "old");
    EXPECT_TRUE(abandoned.open() && abandoned.write("after"));
    EXPECT_EQ(files(), 2);
  }
  fs::create_directory(folder.path() / "directory");
  ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
  for (const char* bad : {"directory", "fifo", "missing/file", "old/file"}) {
    EXPECT_FALSE(put(folder.path() / bad, "x")) << bad;
  }
  EXPECT_FALSE(put("", "x"));
  EXPECT_FALSE(put("/dev/null", "x"));
  EXPECT_EQ(contents("old"), "before");
  EXPECT_EQ(files(), 3);
}

}  // namespace
}  // namespace quorvex
