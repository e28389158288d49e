#include "view/index/kept_index.h"

#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "view/index/book_language.h"

namespace quorvex::view {
namespace {

namespace fs = std::filesystem;

TEST(KeptIndex, KeepsWhatWasUsedLatelyAndFits) {
  const test::TemporaryFolder cache;
  fs::permissions(cache.path(), fs::perms::owner_all);
  const auto kept = KeptIndex::in(cache.path(), "/book");
  ASSERT_TRUE(kept);
  const auto earlier = kept->keep("earlier", 1);
  ASSERT_TRUE(earlier);
  constexpr std::uintmax_t mebibyte = 1 << 20;
  using std::chrono::hours;
  const struct {
    std::string name;
    hours unused;
    std::uintmax_t size;
    bool stays;
  } cases[] = {
      {fs::path(earlier->path).filename(), hours(0), 1, false},
      {"0123456789abcdef-0000000000000001.bchelpindex", hours(24 * 91), 1, false},
      {"0123456789abcdef-0000000000000002.bchelpindex", hours(24 * 89), 1, false},
      {"0123456789abcdef-0000000000000003.bchelpindex", hours(24 * 3), 500 * mebibyte, false},
      {"0123456789abcdef-0000000000000004.bchelpindex", hours(24 * 2), 500 * mebibyte, true},
      {"0123456789abcdef-000000000000000a.bchelpindex", hours(24 * 1), 500 * mebibyte, true},
      {"my-own-index.bchelpindex", hours(24 * 91), 1, true},
      {".quorvex-abandoned", hours(2), 1, false},
      {".quorvex-writing", hours(0), 1, true},
  };
  for (const auto& each : cases) {
    cache.write(each.name, "");
    fs::resize_file(cache.path() / each.name, each.size);
    fs::last_write_time(cache.path() / each.name, fs::file_time_type::clock::now() - each.unused);
  }
  const auto file = kept->keep("new", 0xfedcba9876543210);
  ASSERT_TRUE(file);
  EXPECT_EQ(fs::status(file->path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  for (const auto& each : cases)
    EXPECT_EQ(fs::exists(cache.path() / each.name), each.stays) << each.name;
  ASSERT_TRUE(kept->newest());
  EXPECT_EQ(kept->newest()->path, file->path);
  EXPECT_EQ(kept->newest()->fingerprint, file->fingerprint);
  EXPECT_FALSE(KeptIndex::in(cache.path(), "/other")->newest());
}

TEST(BookLanguage, IsWhatMostPagesState) {
  const Locale users = *Locale::withIdentifier("de_AT_POSIX");
  const struct {
    std::vector<std::string> pages;
    std::string language;
  } cases[] = {
      {{"<html lang=en-US>", "<html lang=en-GB>", "<html lang=fr>"}, "en"},
      {{"<!DOCTYPE html><!-- c --><html class='a' xml:lang='pt-BR'><body lang=en>"}, "pt"},
      {{"<html lang=fr>", "<html lang=de>"}, "de"},
      {{"<html>", "<body lang=fr>"}, "de"},
      {{"<html lang=''>", "<html lang='xx-unheard-of'>", "<html lang='../en'>", ""}, "de"},
      {{std::string(20'000, ' ') + "<html lang=fr>"}, "de"},
      {{}, "de"},
  };
  for (const auto& each : cases) {
    const test::TemporaryFolder book;
    std::vector<std::string> subpaths;
    for (const std::string& page : each.pages) {
      subpaths.push_back(std::to_string(subpaths.size()) + ".html");
      book.write(subpaths.back(), page);
    }
    EXPECT_EQ(languageOfBook(book.path(), subpaths, users).identifier(), each.language);
  }
}

}  // namespace
}  // namespace quorvex::view
