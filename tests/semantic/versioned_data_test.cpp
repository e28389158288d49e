#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
                                 {"data", Data(std::string("\0\1", 2))}};
  for (const auto& [key, value] : attributes)
    built->setObject(value, key);
  built->setObject(Array{}, "array");  // a kind that the format lacks

  const Data data = built->versionedRDXIndexData();
  const auto index = HelpRDXIndex::HelpRDXIndexWithVersionedData(data);
  ASSERT_NE(index, nullptr);
  for (const auto& [key, value] : attributes)
    EXPECT_EQ(index->objectForAttribute(key), value);
  EXPECT_EQ(index->objectForAttribute("array"), std::nullopt);
  EXPECT_EQ(index->description(),
            "Semantic index\n\tlanguage: de_DE\n\tarticles: 1 (1 excluded from search)\n\tterms: 6"
            "\n\tdimensions: 1\n\tshare of variance kept: 100.0 %\n\tto be ignored: yes");

  const docuvault::ArticleRecord record =
      docuvault::SemanticIndexReader::open(data.bytes())->record(0);
  EXPECT_EQ(record.subPath, "a/b.html");
  EXPECT_EQ(record.description, "Worum es geht");
  EXPECT_EQ(record.keywords, (std::vector<std::string>{"eins", "zwei"}));
  ASSERT_EQ(record.actions.size(), 1U);
  EXPECT_EQ(record.actions[0].link, "script:1");
}

TEST(VersionedData, IsRefusedWhenDamaged) {
  const std::string bytes = bookBytes();
  ASSERT_NE(opened(bytes), nullptr);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    std::string cut = bytes.substr(0, size);
    ASSERT_EQ(opened(cut), nullptr) << size;
    if (size < 24) continue;
    for (std::size_t i = 0; i < 8; ++i)  // the size in the header
      cut[16 + i] = static_cast<char>(size >> (8 * i) & 0xFFU);
    ASSERT_EQ(opened(cut), nullptr) << size;
  }
  EXPECT_EQ(opened(bytes + '\0'), nullptr);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
    ASSERT_EQ(opened(damaged), nullptr) << i;
  }
}

}  // namespace
}  // namespace quorvex
