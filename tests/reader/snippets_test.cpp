#include <filesystem>
#include <functional>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/keyed_document.h"
#include "quorvex/help_index.h"
#include "tests/reader/book.h"

namespace quorvex {
namespace {

using test::TemporaryFolder;

/// A folder with a book, and its index.
class Snippets : public testing::Test {
 protected:
  void write(const std::string& path, const std::string& html) {
    _folder.write("book/" + path, html);
    _pages.emplace(path, Data(html));
  }
  std::string book() const { return (_folder.path() / "book").string(); }

  HelpIndex index() const {
    const auto source = std::make_shared<QXIndexableDirectory>(*URL::fileURL(book()));
    IndexSettings settings;
    settings.outputIndexTypes = fullTextIndex;
    settings.indexLocale = Locale::withIdentifier("en");
    const auto made = std::make_shared<QXIndexFileGenerator>(source, settings)->generateIndex();
    return *HelpIndex::fromBytes(test::fileOf(*made));
  }

  /// "#fragment snippet" of the first place, with [matches]; "-" for no snippet.
  static std::string quoted(const Expected<HelpIndex>& index, const std::string& query) {
    const auto result = index->search(query);
    if (!result || result->hits.empty() || result->hits[0].places.empty()) return "nothing";
    const HelpPlace& place = result->hits[0].places[0];
    if (!place.snippet) return "#" + place.fragment + " -";
    return "#" + place.fragment + " " + test::marked(*place.snippet, place.snippetMatches);
  }

  TemporaryFolder _folder;
  Dictionary _pages;
};

TEST_F(Snippets, AreCutAroundTheMatches) {
  const std::string filler = "Some other words are here to fill the page with text. ";
  std::string many;
  for (int i = 0; i < 20; ++i)
    many += filler;
  write("a.html",
        "<meta name=keywords content=hidden><h2 id=one>One<a href='#one'>\u00B6</a></h2><p>" +
            many + "Short <b>zeb</b>ra, (and a) <i>gnu</i>. " + many +
            "<h2 id=two>Two</h2><pre>call( yak )\n\n  again</pre>" + many +
            "<h2 id=ja>\u8A9E</h2><p>\u732B\u306F\u9759\u304B\u306B\u7720\u308B\u3002"
            "\u72AC\u306F\u8D70\u308B\u3002" +
            many);
  write("large.html", "<p>" + std::string(200'000, '.') +
                          "<div id=\"far away\"><i>[-]</i> see<h2>Far</h2>An okapi is "
                          "here. " +
                          many + "<p id=two2>" + std::string(300'000, '-'));
  const auto index = this->index().withBook(book());
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"gnu",
       "#one Short zebra, (and a) [gnu]. Some other words are here to fill the page with "
       "text. Some other words are here to fill the page with text."},
      {"yak",
       "#two call( [yak] ) again Some other words are here to fill the page with text. "
       "Some other words are here to fill the page with text."},
      {"okapi",
       "#far away An [okapi] is here. Some other words are here to fill the page with "
       "text. Some other words are here to fill the page with text."},
      {"hidden", "# -"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(quoted(index, query), expected) << query;
  EXPECT_EQ(quoted(index, "\u72AC").find("\u732B"), std::string::npos);
}

TEST_F(Snippets, ComeFromThePageAsItWasAndFromTheBookAlone) {
  const std::string page = "<h2 id=a>Pump</h2><p>The pump moves water.";
  write("p.html", page);
  // One for all that follows: it is not to quote what it has read before.
  const auto index = this->index().withBook(book());
  const std::string snippet = "#a The pump moves [water].";
  EXPECT_EQ(quoted(index, "water"), snippet);
  const auto description = keyedDocumentXml(Dictionary{{"PageData", _pages}});
  ASSERT_TRUE(description);
  _folder.write("description.kvdoc", *description);
  EXPECT_EQ(quoted(index->withBook((_folder.path() / "description.kvdoc").string()), "water"),
            snippet);

  const std::filesystem::path file = _folder.path() / "book/p.html";
  const auto replace = [&](const std::function<void()>& make) {
    std::filesystem::remove_all(file);
    make();
    return quoted(index, "water");
  };
  const auto link = [&](const std::filesystem::path& target) {
    return [&, target] { std::filesystem::create_symlink(target, file); };
  };
  _folder.write("outside.html", page);
  _folder.write("book/inside.txt", page);
  const std::string none = "#a -";
  EXPECT_EQ(replace([&] { _folder.write("book/p.html", page + " More."); }), none);
  EXPECT_EQ(
      replace([&] { _folder.write("book/p.html", "<h2 id=a>Pump</h2><p>The pump moves honey."); }),
      none);
  EXPECT_EQ(replace([&] { ::mkfifo(file.c_str(), 0600); }), none);
  EXPECT_EQ(replace([&] { std::filesystem::create_directory(file); }), none);
  EXPECT_EQ(replace([] {}), none);
  EXPECT_EQ(replace(link("../outside.html")), none);
  EXPECT_EQ(replace(link(_folder.path() / "outside.html")), none);
  EXPECT_EQ(replace(link("inside.txt")), snippet);
}

}  // namespace
}  // namespace quorvex
