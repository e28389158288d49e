#include <algorithm>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "extract/page_limits.h"
#include "sources/indexable_directory.h"
#include "sources/indexable_help_book_description.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;
using test::printed;
using test::TemporaryFolder;

QXIndexableDirectory directoryAt(const std::string& path) {
  return QXIndexableDirectory(*URL::parse(percentEncodePath(path)));
}

std::vector<std::string> sorted(std::optional<std::vector<std::string>> subpaths) {
  EXPECT_TRUE(subpaths.has_value());
  std::vector<std::string> list = std::move(subpaths).value_or(std::vector<std::string>());
  std::ranges::sort(list);
  return list;
}

TEST(IndexableDirectory, ListsEveryEntryAndFollowsNoFolderLink) {
  const TemporaryFolder book("a b%20#ü");
  book.write("a.HTML", "1");
  book.write("en.lproj/pages/x.htm", "2");
  book.write(".hidden/h.html", "3");
  book.write("new\nline'\xFF.html", "4");
  fs::create_directory(book.path() / "folder.html");
  fs::create_directory_symlink("..", book.path() / "en.lproj" / "loop");
  fs::create_symlink("nowhere", book.path() / "dangling.html");
  QXIndexableDirectory directory = directoryAt(book.path().string());
  EXPECT_EQ(sorted(directory.subpaths()),
            (std::vector<std::string>{
                ".hidden", ".hidden/h.html", "a.HTML", "dangling.html", "en.lproj", "en.lproj/loop",
                "en.lproj/pages", "en.lproj/pages/x.htm", "folder.html", "new\nline'\xFF.html"}));
  EXPECT_EQ(directory.contentsOfSubpath("new\nline'\xFF.html"), Data("4"));
  EXPECT_EQ(directory.description(), book.path().string());
}

TEST(IndexableDirectory, NoDepthIsTooDeep) {
  const TemporaryFolder book;
  const fs::path before = fs::current_path();
  fs::current_path(book.path());
  std::string folder;
  const std::string name(250, 'd');
  for (int depth = 0; depth < 40; ++depth) {  // longer than twice the maximum path
    fs::create_directory(name);
    fs::current_path(name);
    folder += name + '/';
  }
  std::ofstream("page.html") << "deep";
  fs::current_path(before);
  QXIndexableDirectory directory = directoryAt(book.path());
  EXPECT_EQ(directory.subpaths()->back(), folder + "page.html");
  EXPECT_EQ(directory.contentsOfSubpath(folder + "page.html"), Data("deep"));
}

TEST(IndexableDirectory, SaysWhatItCannotRead) {
  const TemporaryFolder book("odd");
  const std::string root = book.path().string();
  ASSERT_EQ(::mkfifo((root + "/fifo.html").c_str(), 0600), 0);
  book.write("real.txt", "text");
  fs::create_symlink("real.txt", book.path() / "link.html");
  QXIndexableDirectory directory = directoryAt(root);
  book.write("large.html", "");
  fs::resize_file(book.path() / "large.html", maximumPageSize + 1);
  for (const auto& each : {std::pair{"fifo.html", "Not a regular file"},
                           {"none.html", "No such file or directory"},
                           {"large.html", "File too large"}}) {
    EXPECT_EQ(printed(0, [&] { EXPECT_EQ(directory.contentsOfSubpath(each.first), std::nullopt); }),
              "Failed reading file <" + root + "/" + each.first + ">: " + each.second + '\n');
  }
  EXPECT_EQ(directory.contentsOfSubpath("link.html"), Data("text"));
  EXPECT_EQ(printed(0, [&] { EXPECT_EQ(directory.contentsOfSubpath(""), std::nullopt); }), "");

  QXIndexableDirectory missing = directoryAt("/no/such book");
  EXPECT_EQ(printed(0, [&] { EXPECT_EQ(missing.subpaths(), std::nullopt); }),
            "Error getting subpaths of directory </no/such%20book>: No such file or directory\n");
}

TEST(IndexableDirectory, TakesHtmlNamesForPages) {
  const Predicate isPage = *directoryAt("/").defaultIncludePredicate();
  for (const auto& [name, expected] : {std::pair{"a.HTML", true},
                                       {"b.htm", true},
                                       {"d/e.html", true},
                                       {"c.xhtml", false},
                                       {"d.html.bak", false},
                                       {".html", true},
                                       {"x\ny.html", true},
                                       {"html", false}}) {
    EXPECT_EQ(*isPage.evaluate(name), expected) << name;
  }
}

TEST(IndexableHelpBookDescription, HandsOverItsPageData) {
  const auto source = [](Dictionary description) {
    return QXIndexableHelpBookDescription(
        std::make_shared<const Dictionary>(std::move(description)));
  };
  auto book = source(
      {{"PageData", Dictionary{{"a", Data("A")}, {"b.txt", "B"}, {"c", 3}}}, {"Other", "x"}});
  EXPECT_EQ(sorted(book.subpaths()), (std::vector<std::string>{"a", "b.txt", "c"}));
  EXPECT_EQ(book.contentsOfSubpath("a"), Data("A"));
  EXPECT_EQ(book.contentsOfSubpath("b.txt"), Data("B"));
  EXPECT_EQ(book.contentsOfSubpath("c"), std::nullopt);
  EXPECT_EQ(book.contentsOfSubpath("d"), std::nullopt);
  auto heavy = source({{"PageData", Dictionary{{"a", std::string(maximumPageSize + 1, 'x')}}}});
  EXPECT_EQ(printed(0, [&] { EXPECT_EQ(heavy.contentsOfSubpath("a"), std::nullopt); }),
            "Failed reading file <a>: File too large\n");
  EXPECT_TRUE(*book.defaultIncludePredicate()->evaluate("b.txt"));
  EXPECT_EQ(book.baseURL(), std::nullopt);
  EXPECT_EQ(source({}).subpaths(), std::nullopt);
  EXPECT_EQ(source({{"PageData", "text"}}).subpaths(), std::nullopt);
}

}  // namespace
}  // namespace quorvex
