#include <gtest/gtest.h>

#include "fulltext/format/index_format.h"
#include "fulltext/format/trait_table.h"
#include "fulltext/reading/index_reader.h"
#include "tests/fulltext/index_support.h"
#include "tests/support/damage.h"

namespace quorvex {
namespace {

struct Page {
  std::string text;
  std::optional<TSPageTraits> traits = {};
};

std::shared_ptr<const IndexReader> indexOf(const std::vector<Page>& pages, unsigned workers = 2) {
  IndexUnderTest index(Dictionary{{std::string(kTSStopWords), Array{"the"}}});
  std::vector<TSDocumentRef> documents;
  for (std::size_t i = 0; i < pages.size(); ++i)
    documents.push_back(TSDocumentCreateWithURL(*URL::fileURL("/" + std::to_string(i))));
  TSIndexAddDocuments(index.ref(), documents, false, workers, [&](std::size_t i) {
    return TSDocumentContent{.text = pages[i].text, .properties = {}, .traits = pages[i].traits};
  });
  return IndexReader::open(index.closed());
}

/// The words from `first` up to `end`.
std::string words(int first, int end) {
  std::string text;
  for (int word = first; word < end; ++word)
    text += "word" + std::to_string(word) + " the ";
  return text;
}

TEST(Traits, AreThoseOfEachPage) {
  const auto page = [](const std::string& text, std::uint8_t share, const std::string& language) {
    return Page{text, TSPageTraits{share, static_cast<std::uint8_t>(share / 2), language}};
  };
  const std::vector<Page> pages = {page("plant", 255, "fr"),
                                   page(words(0, 50), 32, "en"),
                                   page("", 0, ""),
                                   page("the", 9, "en"),
                                   {"plant"},
                                   page("Plant", 7, "fr")};
  for (const unsigned workers : {1U, 2U, 4U}) {
    const auto reader = indexOf(pages, workers);
    for (std::uint32_t id = 0; id < pages.size(); ++id) {
      const IndexTraits expected = {pages[id].traits.value_or(TSPageTraits()).linkShare};
      ASSERT_EQ(reader->traits(id).value().linkShare, expected.linkShare) << id;
      EXPECT_EQ(reader->traits(id)->codeShare, expected.linkShare / 2) << id;
      EXPECT_EQ(reader->traits(id)->sketch == 0, id >= 2 && id <= 4) << id;
    }
    EXPECT_FALSE(reader->traits(6) || reader->traits(UINT32_MAX));
    // On every system.
    EXPECT_EQ(reader->traits(0)->sketch, 0xBE8A'4602'CF9B'5713U);
    EXPECT_EQ(reader->traits(5)->sketch, reader->traits(0)->sketch);
    EXPECT_EQ(reader->statedLanguage(), "en");
  }
  EXPECT_FALSE(indexOf({{"plant"}, {"tree"}})->traits(0));
}

TEST(Traits, OfDamagedSections) {
  const std::vector<IndexTraits> traits = {{1, 2, 3}, {255, 254, UINT64_MAX}};
  const std::string section = encodeTraits("zh-Hant", traits);
  EXPECT_EQ(TraitTable(section + "more", 2).traits(1).value().sketch, UINT64_MAX);
  EXPECT_EQ(TraitTable(section, 2).language(), "zh-Hant");
  const auto isEmpty = [](std::string_view bytes, std::uint32_t count) {
    const TraitTable table(bytes, count);
    return !table.traits(0) && table.language().empty();
  };
  for (std::size_t size = 0; size < section.size(); ++size)
    EXPECT_TRUE(isEmpty(std::string_view(section).substr(0, size), 2)) << size;
  EXPECT_TRUE(isEmpty(section, 3) && isEmpty(section, UINT32_MAX));
  for (const std::string& language : {std::string("e n"), std::string(36, 'a')})
    EXPECT_TRUE(isEmpty(encodeTraits(language, traits), 2)) << language;
}

TEST(Sketches, AreAlikeForNearCopies) {
  struct Case {
    std::string a, b;
    bool areCopies;
  };
  const std::vector<Case> cases = {
      {words(0, 500), words(0, 500), true},
      {words(0, 500), words(0, 505), true},
      {words(0, 500), words(900, 903) + words(0, 500), true},
      {words(0, 500), words(250, 750), false},
      {words(0, 500), words(500, 1000), false},
      {"red lamp", "The red, the LAMP", true},
      {"red lamp", "lamp red", false},
      {"red", "lamp", false},
      {"red", "", false},
      {"", "the", false},
  };
  for (const auto& [a, b, areCopies] : cases) {
    const TSPageTraits traits;
    const auto reader = indexOf({{a, traits}, {b, traits}});
    EXPECT_EQ(areNearCopies(reader->traits(0)->sketch, reader->traits(1)->sketch), areCopies)
        << a.substr(0, 30) << '|' << b.substr(0, 30);
  }
  for (const TextSketch different : {0x0U, 0x8U, 0x8080U, 0x8084U, 0xFF0F0000U})
    EXPECT_EQ(areNearCopies(TextSketch{1} << 40U, (TextSketch{1} << 40U) ^ different),
              different < 0x8084U);
}

}  // namespace
}  // namespace quorvex
