#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/files.h"
#include "quorvex/help_index.h"
#include "tests/reader/book.h"
#include "tests/support/damage.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;
using test::indexed;

std::string bytesOf(const fs::path& path) {
  const Result<Data> data = readFile(path);
  return data ? std::string(data->bytes()) : "(" + data.error().description + ")";
}

class BeaconCache : public testing::Test {
 protected:
  BeaconCache() {
    ::setenv("QUORVEX_CACHE", "yes", 1);
    ::setenv("XDG_CACHE_HOME", _home.path().c_str(), 1);
    write(indexed(searchableItems));
  }
  ~BeaconCache() override { ::setenv("QUORVEX_CACHE", "no", 1); }

  void write(const Dictionary& index) const {
    _home.write("book", test::fileOf(index, IndexFormat::beacon));
    // A file that may still change within the tick of the file system's clock is not kept.
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
  }
  /// What can be asked of the book.
  std::string answers() const {
    const auto index = HelpIndex::open((_home.path() / "book").string());
    if (!index) return index.failure().message;
    const IndexContents& contents = index->contents();
    std::string all = std::to_string(contents.format) + contents.title.value_or("-") +
                      contents.remoteRoot.value_or("-");
    for (std::size_t i = 0; i < contents.pages; ++i)
      all += index->page(i).path + index->page(i).description;
    for (const char* const query : {"bulbs number5", "\"hot oven\" -number4", "wather", "page 7"}) {
      const auto result = index->search(query, {.explained = true});
      for (const Hit& hit : result->hits) {
        all += '\n' + hit.page.path + hit.page.title + std::to_string(hit.score) +
               std::to_string(hit.titleMatches.size());
        for (const auto& part : hit.parts)
          all += part.name + std::to_string(part.value);
      }
    }
    for (const char* const anchor : {"start", "only3", "nowhere"}) {
      for (const std::string& path : index->pagesWithAnchor(anchor))
        all += path;
    }
    return all;
  }
  /// The index that was kept last; empty if there is none.
  fs::path kept() const {
    fs::path found;
    if (!fs::exists(_cache)) return found;
    for (const auto& entry : fs::directory_iterator(_cache)) {
      if (entry.path().extension() != ".bchelpindex") continue;
      const bool isLater =
          found.empty() || fs::last_write_time(found) < fs::last_write_time(entry.path());
      if (isLater) found = entry.path();
    }
    return found;
  }

  test::TemporaryFolder _home;
  const fs::path _cache = _home.path() / "quorvex";
  const fs::path _secret = _cache / "items-secret";
};

TEST_F(BeaconCache, AnswersAsWithoutIt) {
  ::setenv("QUORVEX_CACHE", "no", 1);
  const std::string expected = answers();
  EXPECT_FALSE(fs::exists(_cache));
  ::setenv("QUORVEX_CACHE", "", 1);
  EXPECT_EQ(answers(), expected);
  const fs::path first = kept();
  EXPECT_EQ(fs::status(first).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(_secret).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(_cache).permissions(), fs::perms::owner_all);
  EXPECT_EQ(answers(), expected);

  // What is kept is all that is read.
  const std::string file = bytesOf(_home.path() / "book");
  fs::copy_file(first, _home.path() / "aside");
  write(indexed(searchableItems, 9));
  const std::string fewer = answers();
  EXPECT_NE(fewer, expected);
  fs::remove(first);
  const fs::path second = kept();
  fs::copy_file(_home.path() / "aside", second, fs::copy_options::overwrite_existing);
  EXPECT_EQ(answers(), expected);

  // Other items in as many bytes are another book.
  _home.write("book", test::flipped(file, file.size() / 2));
  EXPECT_NE(answers(), expected);
  EXPECT_EQ(kept(), second);
}

TEST_F(BeaconCache, KeepsASemanticIndexAndTheRemoteRoot) {
  Dictionary index = indexed(searchableItems);
  index.insert_or_assign("RDXIndexData", *find(indexed(semanticIndex), "RDXIndexData"));
  index.insert_or_assign("TSI_REMOTE_ROOT", "http://remote.example/");
  write(index);
  const std::string expected = answers();
  EXPECT_NE(kept(), fs::path());
  EXPECT_EQ(answers(), expected);
}

TEST_F(BeaconCache, IsNeverTrustedBlindly) {
  const std::string expected = answers();
  fs::path file = kept();
  const std::string sound = bytesOf(file);
  const fs::path aside = _home.path() / "aside";
  const auto put = [](const fs::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  };
  using Change = std::function<void()>;
  struct Case {
    const char* what;
    Change damage;
    bool isMadeAgain = true;
  };
  const std::vector<Case> cases = {
      {"nothing", [] {}},
      {"missing", [&] { fs::remove(file); }},
      {"empty", [&] { put(file, ""); }},
      {"truncated", [&] { put(file, sound.substr(0, sound.size() / 2)); }},
      {"longer", [&] { put(file, sound + "x"); }},
      {"other bytes", [&] { put(file, test::flipped(sound, sound.size() / 2)); }},
      {"no index", [&] { put(file, "no index"); }},
      {"items", [&] { put(file, bytesOf(_home.path() / "book")); }},
      {"open to others", [&] { ::chmod(file.c_str(), 0622); }},
      {"unreadable", [&] { ::chmod(file.c_str(), 0); }},
      {"a link",
       [&] {
         fs::rename(file, aside);
         fs::create_symlink(aside, file);
       }},
      {"a file with two names", [&] { fs::create_hard_link(file, _cache / "other"); }},
      {"a pipe",
       [&] {
         fs::remove(file);
         ::mkfifo(file.c_str(), 0600);
       }},
      {"a folder",
       [&] {
         fs::remove(file);
         fs::create_directory(file);
       },
       false},
      {"secret of another size", [&] { put(_secret, "short"); }},
      {"secret open to others", [&] { ::chmod(_secret.c_str(), 0666); }},
      {"secret a link",
       [&] {
         fs::rename(_secret, aside);
         fs::create_symlink(aside, _secret);
       }},
      {"folder open to others", [&] { ::chmod(_cache.c_str(), 0777); }},
      {"folder a link",
       [&] {
         fs::rename(_cache, aside);
         fs::create_directory_symlink(aside, _cache);
       },
       false},
      {"folder a file",
       [&] {
         fs::remove_all(_cache);
         put(_cache, "");
       },
       false},
  };
  for (const Case& each : cases) {
    each.damage();
    const std::string before = fs::is_regular_file(aside) ? bytesOf(aside) : "";
    EXPECT_EQ(answers(), expected) << each.what;
    EXPECT_EQ(fs::is_regular_file(aside) ? bytesOf(aside) : "", before) << each.what;
    const fs::path now = each.isMadeAgain ? kept() : fs::path();
    if (each.isMadeAgain) {
      EXPECT_TRUE(bytesOf(now) == sound) << each.what;
      EXPECT_TRUE(::access(now.c_str(), R_OK) == 0 && fs::hard_link_count(now) == 1 &&
                  fs::symlink_status(now).type() == fs::file_type::regular)
          << each.what;
      EXPECT_EQ(answers(), expected) << each.what;
    }
    // As it was, with the secret of the first name.
    fs::remove_all(aside);
    fs::remove_all(_cache);
    fs::create_directory(_cache);
    fs::permissions(_cache, fs::perms::owner_all);
    EXPECT_EQ(answers(), expected);
    file = kept();
  }
  if (::geteuid() != 0) return;
  for (const fs::path& path : {file, _secret, _cache}) {
    EXPECT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    EXPECT_EQ(answers(), expected) << path;
    EXPECT_EQ(::chown(path.c_str(), 0, 0), 0);
  }
}

TEST_F(BeaconCache, IsMadeAgainWhenDamageIsFoundLate) {
  const fs::path book = _home.path() / "book";
  write(indexed(searchableItems, 1500));
  const std::string expected = answers();
  const std::string sound = bytesOf(kept());
  for (std::size_t at = 0; at < sound.size(); at += sound.size() / 16) {
    std::ofstream(kept(), std::ios::binary) << test::flipped(sound, at);
    EXPECT_EQ(answers(), expected) << at;
  }
  // While it is open.
  for (const bool isSameBook : {true, false}) {
    fs::remove(kept());
    EXPECT_EQ(answers(), expected);
    const auto index = HelpIndex::open(book.string());
    ASSERT_TRUE(index);
    std::ofstream(kept(), std::ios::binary) << "no index";
    if (!isSameBook) fs::last_write_time(book, fs::file_time_type());
    EXPECT_EQ(bool(index->search("bulbs number5")), isSameBook);
  }
}

TEST_F(BeaconCache, KeepsWhatWasUsedLatelyAndFits) {
  answers();
  const std::string name = "items-0000000000000001-0123456789abcdef0123456789abcde";
  constexpr std::uintmax_t mebibyte = 1 << 20;
  using std::chrono::hours;
  const struct {
    std::string name;
    hours unused;
    std::uintmax_t size;
    bool stays;
  } cases[] = {
      {name + "0.bchelpindex", hours(3), 200 * mebibyte, false},
      {name + "1.bchelpindex", hours(2), 200 * mebibyte, true},
      {name + "2.bchelpindex", hours(1), 300 * mebibyte, true},
      {name + "3.bchelpindex", hours(24 * 91), 1, false},
      {"0123456789abcdef-0000000000000001.bchelpindex", hours(9), 900 * mebibyte, true},
      {".quorvex-abandon", hours(2), 1, false},
      {"items-of-mine.html", hours(24 * 91), 600 * mebibyte, true},
  };
  for (const auto& each : cases) {
    _home.write("quorvex/" + each.name, "");
    fs::resize_file(_cache / each.name, each.size);
    fs::last_write_time(_cache / each.name, fs::file_time_type::clock::now() - each.unused);
  }
  write(indexed(searchableItems, 9));
  answers();
  for (const auto& each : cases)
    EXPECT_EQ(fs::exists(_cache / each.name), each.stays) << each.name;
}

TEST_F(BeaconCache, IsBelowTheHomeFolderOrNowhere) {
  const std::string home = ::getenv("HOME") != nullptr ? ::getenv("HOME") : "";
  ::setenv("HOME", (_home.path() / "home").c_str(), 1);
  for (const char* const folder : {"", "relative"}) {
    ::setenv("XDG_CACHE_HOME", folder, 1);
    answers();
    EXPECT_TRUE(fs::exists(_home.path() / "home/.cache/quorvex/items-secret")) << folder;
    fs::remove_all(_home.path() / "home");
  }
  ::setenv("XDG_CACHE_HOME", _home.path().c_str(), 1);
  for (const rlim_t mostBytes : {rlim_t{10}, rlim_t{200}}) {
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{mostBytes, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(answers().substr(0, 7), "2Page 0");
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(kept(), fs::path());
  }
  ::setenv("HOME", "/dev/null", 1);
  EXPECT_EQ(answers().substr(0, 7), "2Page 0");
  ::setenv("HOME", home.c_str(), 1);
}

}  // namespace
}  // namespace quorvex
