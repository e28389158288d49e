#include "view/book/book_folder.h"

#include <filesystem>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/temporary_folder.h"

namespace quorvex::view {
namespace {

using Kind = BookFolder::Kind;
namespace fs = std::filesystem;

bool isOpenToAll(const fs::path& folder) {
  constexpr fs::perms enter = fs::perms::others_exec;
  return (fs::status(folder).permissions() & enter) == enter &&
         (folder == folder.parent_path() || isOpenToAll(folder.parent_path()));
}

TEST(BookFolder, FollowsLinksToWhatEverybodyMayRead) {
  const test::TemporaryFolder outside;
  const fs::path& root = outside.path();
  for (const char* file : {"book/a/b.txt", "book/.git/config", "public.txt", "private.txt",
                           "closed/x.txt", "fonts/f.woff", "fonts/private", ".hidden/x.txt"}) {
    outside.write(file, "contents");
    fs::permissions(root / file, fs::perms(0644));
  }
  for (const fs::path& folder : {root.parent_path(), root, root / "fonts", root / ".hidden"})
    fs::permissions(folder, fs::perms(0755));
  for (const char* file : {"private.txt", "fonts/private"})
    fs::permissions(root / file, fs::perms(0600));
  fs::permissions(root / "closed", fs::perms(0700));
  const std::vector<std::pair<std::string, fs::path>> links = {
      {"in.txt", "a/b.txt"},
      {"over.txt", "a/../../book/a/b.txt"},
      {"public.txt", "../public.txt"},
      {"far.txt", root / "public.txt"},
      {"twice.txt", "public.txt"},
      {"private.txt", "../private.txt"},
      {"closed.txt", "../closed/x.txt"},
      {"hidden.txt", "../.hidden/x.txt"},
      {"process.txt", "/proc/self/status"},
      {"memory.txt", "/proc/self/maps"},
      {"descriptor.txt", "/proc/self/fd/0"},
      {"zeros.txt", "/dev/zero"},
      {"fonts", "../fonts"},
      {"all", "/"},
      {"round", "round"},
      {"lost", "../nothing"},
      {"stranger.txt", "../public.txt"},
  };
  for (const auto& [link, target] : links)
    fs::create_symlink(target, root / "book" / link);
  ASSERT_EQ(::mkfifo((root / "book/pipe.txt").c_str(), 0644), 0);
  const bool isRoot = ::lchown((root / "book/stranger.txt").c_str(), 12345, 12345) == 0;

  const Kind shared = isOpenToAll(root) ? Kind::file : Kind::none;
  const std::vector<std::pair<std::string, Kind>> cases = {
      {"", Kind::folder},
      {"a", Kind::folder},
      {"a/b.txt", Kind::file},
      {"in.txt", Kind::file},
      {"over.txt", shared},
      {"public.txt", shared},
      {"far.txt", shared},
      {"twice.txt", shared},
      {"fonts/f.woff", shared},
      {"fonts/private", Kind::none},
      {"fonts/../public.txt", Kind::none},
      {"private.txt", Kind::none},
      {"closed.txt", Kind::none},
      {"hidden.txt", Kind::none},
      {"process.txt", Kind::none},
      {"memory.txt", Kind::none},
      {"descriptor.txt", Kind::none},
      {"zeros.txt", Kind::none},
      {"all/etc/shadow", Kind::none},
      {"round", Kind::none},
      {"lost", Kind::none},
      {"pipe.txt", Kind::none},
      {".git/config", Kind::none},
      {"a/../public.txt", Kind::none},
      {"../public.txt", Kind::none},
      {"a/b.txt/c", Kind::none},
      {std::string("a\0b", 3), Kind::none},
      {"stranger.txt", isRoot ? Kind::none : shared},
  };
  const auto folder = BookFolder::open((root / "book").string());
  ASSERT_TRUE(folder);
  for (const auto& [path, kind] : cases) {
    const BookFolder::Found found = (*folder)->find(path);
    EXPECT_EQ(found.kind, kind) << path;
    EXPECT_EQ(found.file != nullptr, kind == Kind::file) << path;
  }
}

}  // namespace
}  // namespace quorvex::view
