#include "view/index/index_keeper.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/support/temporary_folder.h"

namespace quorvex::view {
namespace {

namespace fs = std::filesystem;
using Phase = IndexState::Phase;
using testing::HasSubstr;

class IndexKeeping : public testing::Test {
 protected:
  IndexKeeping() {
    fs::permissions(_cache.path(), fs::perms::owner_all);
    _book.write("a.html",
                "<html lang=en><title>Apples</title><h2 id=a>Apple</h2><p>It grows on a tree.");
    _book.write("b/b.htm", "<title>Berries</title><p>A berry grows on a bush.");
  }

  std::unique_ptr<IndexKeeper> keeper() {
    return std::make_unique<IndexKeeper>(IndexKeeper::Book{_book.path()}, _cache.path());
  }
  /// Waits until there is an index other than that one, or none can be had.
  static IndexState settled(const IndexKeeper& keeper,
                            std::optional<std::uint64_t> earlier = std::nullopt) {
    for (;; std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
      const IndexState state = keeper.state();
      const bool isNew = state.phase == Phase::ready && state.identity != earlier;
      if (isNew || state.phase == Phase::failed) return state;
    }
  }
  /// The paths of the pages that a query finds.
  static std::vector<std::string> found(IndexKeeper& keeper, const std::string& query) {
    std::vector<std::string> paths;
    const std::optional<HelpIndex> index = keeper.index();
    const auto result = index ? index->search(query) : Failure{};
    if (!result) return {"no index"};
    for (const Hit& hit : result->hits)
      paths.push_back(hit.page.path);
    return paths;
  }
  std::vector<fs::path> keptFiles() const {
    return {fs::directory_iterator(_cache.path()), fs::directory_iterator()};
  }
  /// Makes an index, which is kept once the keeper has ended.
  std::optional<std::uint64_t> makeFirst() {
    const IndexState state = settled(*keeper());
    EXPECT_EQ(state.phase, Phase::ready);
    return state.identity;
  }

  using Paths = std::vector<std::string>;
  test::TemporaryFolder _book;
  test::TemporaryFolder _cache;
};

TEST_F(IndexKeeping, AKeptIndexServesUntilTheChangedBookIsIndexedAgain) {
  const fs::path page = _book.path() / "a.html";
  const struct {
    std::function<void()> change;
    Paths trees;
  } cases[] = {
      {[&] { _book.write("c.html", "<p>Trees."); }, {"/a.html", "/c.html"}},
      {[&] { fs::remove(_book.path() / "c.html"); }, {"/a.html"}},
      {[&] {  // of the same size, and no younger
         const auto time = fs::last_write_time(page);
         _book.write(
             "new", "<html lang=en><title>Apples</title><h2 id=a>Apple</h2><p>It grows on a bush.");
         fs::last_write_time(_book.path() / "new", time);
         fs::rename(_book.path() / "new", page);
       },
       {}},
  };
  std::optional<std::uint64_t> identity = makeFirst();
  for (const auto& each : cases) {
    each.change();
    const auto changed = keeper();
    identity = settled(*changed, identity).identity;
    EXPECT_THAT(found(*changed, "tree"), testing::UnorderedElementsAreArray(each.trees));
  }
  ASSERT_EQ(keptFiles().size(), 1);
  const fs::path file = keptFiles().front();
  const auto unchanged = keeper();
  EXPECT_EQ(settled(*unchanged).identity, identity);
  EXPECT_EQ(found(*unchanged, "bush").size(), 2);
  EXPECT_EQ(keptFiles(), std::vector{file});
}

TEST_F(IndexKeeping, IndexesAgainWhatCannotBeOpened) {
  makeFirst();
  const fs::path file = keptFiles().front();
  const auto size = fs::file_size(file);
  const std::function<void()> damages[] = {
      [&] { fs::resize_file(file, size / 2); },
      [&] { fs::resize_file(file, 0); },
      [&] { _cache.write(file.filename(), std::string(size, 'x')); },
      [&] { fs::remove(file); },
  };
  for (const auto& damage : damages) {
    damage();
    const auto starting = keeper();
    EXPECT_EQ(settled(*starting).message, "");
    EXPECT_EQ(found(*starting, "tree"), Paths{"/a.html"});
    starting->closeIfIdle(std::chrono::seconds(0));
    EXPECT_EQ(found(*starting, "tree"), Paths{"/a.html"});
  }
  const auto running = keeper();
  const IndexState before = settled(*running);
  running->closeIfIdle(std::chrono::seconds(0));
  damages[1]();
  EXPECT_FALSE(running->index());
  EXPECT_EQ(settled(*running).identity, before.identity);
}

TEST_F(IndexKeeping, TellsWhyThereIsNoIndex) {
  const test::TemporaryFolder empty;
  empty.write("notes.txt", "no page");
  fs::create_directory(empty.path() / "folder.html");
  const test::TemporaryFolder hidden;
  hidden.write("a.html", "<meta name=robots content='noindex'><p>hidden");
  const struct {
    IndexKeeper::Book book;
    const char* message;
  } cases[] = {
      {{empty.path()}, "There are no pages (.html, .htm) in "},
      {{hidden.path()}, "None of the 1 pages in "},
      {{_book.path() / "missing"}, " cannot be read: No such file"},
      {{_book.path(), empty.path() / "none"}, "No such file"},
      {{_book.path(), empty.path() / "notes.txt"}, ""},
  };
  for (const auto& each : cases) {
    IndexKeeper keeper(each.book, _cache.path());
    const IndexState state = settled(keeper);
    EXPECT_EQ(state.phase, Phase::failed);
    EXPECT_THAT(state.message, HasSubstr(each.message));
    EXPECT_FALSE(keeper.index());
  }
  EXPECT_TRUE(keptFiles().empty());
}

TEST_F(IndexKeeping, ServesFromMemoryWhatCannotBeKept) {
  const auto expectServed = [&](const std::string& cache, const char* message) {
    IndexKeeper keeper({_book.path()}, cache);
    settled(keeper);
    while (keeper.state().message.empty() && *message != '\0')
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_THAT(keeper.state().message, HasSubstr(message));
    keeper.closeIfIdle(std::chrono::seconds(0));
    EXPECT_EQ(found(keeper, "berry"), Paths{"/b/b.htm"});
  };
  expectServed("", "");
  expectServed(_cache.path() / "missing", "No such file");
  rlimit usual = {};
  ::getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit small{100, usual.rlim_max};
  ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  expectServed(_cache.path(), "The index could not be kept: File too large");
  ::setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_TRUE(keptFiles().empty());
  fs::permissions(_cache.path(), fs::perms::others_read, fs::perm_options::add);
  expectServed(_cache.path(), "is not a private folder of yours");
  EXPECT_TRUE(keptFiles().empty());
}

TEST_F(IndexKeeping, AGivenIndexFileIsUsedAsItIs) {
  makeFirst();
  const fs::path file = _book.path() / "given.bchelpindex";
  fs::rename(keptFiles().front(), file);
  _book.write("c.html", "<p>Trees.");
  {
    IndexKeeper keeper({_book.path(), file}, _cache.path());
    const IndexState before = settled(keeper);
    EXPECT_EQ(settled(IndexKeeper({_book.path(), file}, "")).identity, before.identity);
    keeper.closeIfIdle(std::chrono::seconds(0));
    fs::last_write_time(file, fs::file_time_type::clock::now() + std::chrono::hours(1));
    const auto result = keeper.index()->search("tree");
    ASSERT_TRUE(result && result->hits.size() == 1 && result->hits[0].places.size() == 1);
    EXPECT_TRUE(result->hits[0].places[0].snippet);
    EXPECT_NE(keeper.state().identity, before.identity);
  }
  EXPECT_TRUE(keptFiles().empty());
}

TEST_F(IndexKeeping, MakingEndsWithTheKeeperAndLeavesNothingBehind) {
  for (int i = 0; i < 3'000; ++i)
    _book.write("page" + std::to_string(i) + ".html", "<p>One of many pages.");
  {
    const auto ending = keeper();
    while (ending->state().pagesDone == 0)
      std::this_thread::yield();
    EXPECT_EQ(ending->state().phase, Phase::making);
    EXPECT_EQ(ending->state().pagesInAll, 3'002);
  }
  EXPECT_TRUE(keptFiles().empty());
}

}  // namespace
}  // namespace quorvex::view
