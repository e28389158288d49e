#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/files.h"
#include "semantic/format/index_format.h"
#include "semantic/reading/index_reader.h"
#include "tests/semantic/books.h"

namespace quorvex {
namespace {

std::string bookBytes() {
  return std::string(test::indexOf(test::smallBook())->versionedRDXIndexData().bytes());
}

std::shared_ptr<HelpRDXIndex> opened(std::string bytes) {
  return HelpRDXIndex::HelpRDXIndexWithVersionedData(Data(std::move(bytes)));
}

TEST(VersionedData, KeepsArticlesAndAttributes) {
  HelpRDXIndexBuilder builder(std::nullopt, "de_DE");
  const Dictionary action = {{std::string(HelpDocPropertyActionName), "Start"},
                             {std::string(HelpDocPropertyActionLink), "script:1"}};
  builder.addHelpArticleWithProperties(
      {{std::string(HelpDocPropertyTitle), "Titel"},
       {std::string(HelpDocPropertyDescription), "Worum es geht"},
       {std::string(HelpDocPropertyKeywords), Array{"eins", "zwei"}},
       {std::string(HelpDocPropertyActions), Array{action}},
       {std::string(HelpDocPropertyExcludeFromSearch), true}},
      "a/b.html");
  const auto built = builder.index();
  const Dictionary attributes = {{std::string(HelpRDXIndexAttributeIgnoreRDXKey), true},
                                 {"integer", -5},
                                 {"real", 2.5},
                                 {"string", "text"},
                                 {"array", Array{"a", 1}},
                                 {"data", Data(std::string("\0\1", 2))}};
  for (const auto& [key, value] : attributes)
    built->setObject(value, key);
  built->setObject(Array{Array{}}, "nested");  // a kind that the format lacks

  const Data data = built->versionedRDXIndexData();
  const auto index = HelpRDXIndex::HelpRDXIndexWithVersionedData(data);
  ASSERT_NE(index, nullptr);
  for (const auto& [key, value] : attributes)
    EXPECT_EQ(index->objectForAttribute(key), value);
  EXPECT_EQ(index->objectForAttribute("nested"), std::nullopt);
  EXPECT_EQ(index->description(),
            "Semantic index\n\tlanguage: de_DE\n\tarticles: 1 (1 excluded from search)\n\tterms: 6"
            "\n\tdimensions: 1\n\tshare of variance kept: 100.0 %\n\tto be ignored: yes");

  const docuvault::ArticleRecord record =
      docuvault::SemanticIndexReader::open(data.lazyBytes())->articleTable().record(0);
  EXPECT_TRUE(record.excludedFromSearch);
  EXPECT_EQ(record.subPath, "a/b.html");
  EXPECT_EQ(record.description, "Worum es geht");
  EXPECT_EQ(record.keywords, (std::vector<std::string>{"eins", "zwei"}));
  ASSERT_EQ(record.actions.size(), 1U);
  EXPECT_EQ(record.actions[0].link, "script:1");
}

/// The smallBook() as version 1 stored it, with keywords, a description and an excluded page.
std::string firstVersion() {
  return std::string(readFile(QUORVEX_SOURCE_DIR "/tests/semantic/first_version.rdx")->bytes());
}

TEST(VersionedData, ReadsTheFirstVersion) {
  HelpRDXIndexBuilder builder(std::nullopt, "en_US");
  std::vector<test::Page> pages = test::smallBook();
  std::ranges::sort(pages, {}, &test::Page::subPath);
  for (test::Page& page : pages) {
    page.excluded = page.subPath == "moon";
    if (page.excluded) page.content.clear();
    Dictionary properties = test::article(page).properties;
    if (page.subPath == "cake") {
      properties.emplace(HelpDocPropertyDescription, "Sweet");
      properties.emplace(HelpDocPropertyKeywords, Array{"sponge", "icing"});
    }
    builder.addHelpArticleWithProperties(properties, page.subPath + ".html");
  }
  const auto index = opened(firstVersion());
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(index->versionedRDXIndexData(), builder.index()->versionedRDXIndexData());
}

TEST(VersionedData, FirstVersionIsRefusedWhenDamaged) {
  const std::string bytes = firstVersion();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
    ASSERT_EQ(opened(damaged), nullptr) << i;
    ASSERT_EQ(opened(bytes.substr(0, i)), nullptr) << i;
  }
}

/// The answers to every kind of query.
std::string answersOf(const HelpRDXIndex& index) {
  return test::listed(index.articlesNearestToText("engine of a car", 100)) + '|' +
         test::listed(index.articlesNearestToArticle("star1", 100));
}

TEST(VersionedData, IsRefusedWhenDamaged) {
  const std::string bytes = bookBytes();
  const std::size_t healthy = answersOf(*opened(bytes)).size();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    std::string cut = bytes.substr(0, size);
    ASSERT_EQ(opened(cut), nullptr) << size;
    if (size < 24) continue;
    for (std::size_t i = 0; i < 8; ++i)  // the size in the header
      cut[16 + i] = static_cast<char>(size >> (8 * i) & 0xFFU);
    ASSERT_EQ(opened(cut), nullptr) << size;
  }
  EXPECT_EQ(opened(bytes + '\0'), nullptr);
  // Header, table, info and attributes are read at once; other damaged sections read as empty.
  const std::size_t readAtOnce = 24 + 32 * docuvault::sectionCount + 8 + 37 + 1;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
    const auto index = opened(damaged);
    ASSERT_EQ(index == nullptr, i < readAtOnce) << i;
    if (index == nullptr) continue;
    EXPECT_LE(answersOf(*index).size(), healthy) << i;
  }
}

/// Has everything but the bytes from `damaged` on, and remembers how much was asked for.
class Unpacking : public Residency {
 public:
  explicit Unpacking(const char* damaged) : _damaged(damaged) {}
  bool require(std::string_view range) const override {
    asked += range.size();
    return range.data() + range.size() <= _damaged;
  }
  mutable std::size_t asked = 0;

 private:
  const char* _damaged;
};

TEST(VersionedData, IsUnpackedWhenItIsAskedFor) {
  const auto bytes = std::make_shared<const std::string>(bookBytes());
  const std::string expected = answersOf(*opened(*bytes));
  std::string last;
  for (std::size_t size = 24 + 32 * docuvault::sectionCount + 8; size <= bytes->size(); ++size) {
    const Unpacking unpacking(bytes->data() + size);
    const auto index =
        HelpRDXIndex::HelpRDXIndexWithVersionedData(Data(bytes, LazyBytes(*bytes, &unpacking)));
    EXPECT_LT(unpacking.asked, 1000U);
    if (index == nullptr) continue;
    index->versionedRDXIndexData();
    last = answersOf(*index);
    EXPECT_LE(last.size(), expected.size()) << size;
  }
  EXPECT_EQ(last, expected);
}

TEST(VersionedData, HasNoNamesInBlocksThatOverlap) {
  const std::string block("\0\1a\0", 4);
  for (const char end : {'\4', '\5'}) {
    const std::string names = std::string({end, 0, 0, 0, 4, 0, 0, 0}) + block + block;
    const docuvault::ArticleTable articles(17, {}, names, {});
    EXPECT_EQ(articles.subPath(0), end > 4 ? "" : "a");
  }
}

}  // namespace
}  // namespace quorvex
