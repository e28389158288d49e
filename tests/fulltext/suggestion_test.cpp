#include "fulltext/searching/suggestion.h"

#include <gtest/gtest.h>

#include "tests/fulltext/index_support.h"

namespace quorvex::textsearch {
namespace {

struct Page {
  std::string title;
  std::string text;
  std::vector<TSName> names = {};
};

class SearchedBook {
 public:
  explicit SearchedBook(const std::vector<Page>& pages) : index(readerOf(pages)), titles(*index) {}

  std::string similar(std::string_view word, std::size_t count = 1) const {
    std::string list;
    for (const SpellingCandidate& candidate : similarTerms(*index, titles, word, count))
      list += (list.empty() ? "" : ", ") + candidate.term;
    return list;
  }

 private:
  static std::shared_ptr<const IndexReader> readerOf(const std::vector<Page>& pages) {
    IndexUnderTest built;
    std::vector<TSDocumentRef> documents;
    for (std::size_t i = 0; i < pages.size(); ++i)
      documents.push_back(TSDocumentCreateWithURL(*URL::fileURL("/" + std::to_string(i))));
    TSIndexAddDocuments(built.ref(), documents, false, 1, [&](std::size_t i) {
      const std::vector<TSPlace> places = {{0, "f", 1, pages[i].title, pages[i].names}};
      return TSDocumentContent{
          pages[i].text, {{std::string(titleProperty), pages[i].title}}, TSPlacesCreate(places)};
    });
    return IndexReader::open(built.closed());
  }

 public:
  const std::shared_ptr<const IndexReader> index;
  const TitleIndex titles;
};

TEST(Suggestion, RanksByEditsThenByWhereTheTermStands) {
  const SearchedBook book({
      {"Recursive_mutex", "recursive_mutex shared_timed_mutex fill_n fill deadlock detected"},
      {"Turbine", "turbine carbine form from asyncio.gather sha256 base database"},
      {"Valve", "valve valse halve tuple stamp", {{"Swamp", TSNameKind::definition}}},
      {"Übergröße", "übergröße настройка слово swamp"},
      {"Word", "from from word", {}},
      {"Word", "from carbine carbine", {}},
  });
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"recursivem_utex", "recursive_mutex"},
      {"shnared_timed_mutex", "shared_timed_mutex"},
      {"sharedtimedmutex", "shared_timed_mutex"},
      {"fil_ln", "fill_n"},
      {"asynco.gahter", "asyncio.gather"},
      {"asynco.fil_ln", ""},  // the name is too far off, and "asyncio" stands nowhere alone
      {"valvee.fill_m", "valve.fill_n"},
      {"valce", "valve"},            // "valse" stands in no title
      {"hvalve", "valve"},           // neither does "halve"
      {"stwamp", "swamp"},           // is defined
      {"furm", "form"},              // two edits are too many for so short a word
      {"frrom", "from"},             // a doubled letter
      {"xarbine", "carbine"},        // in more documents; neither begins alike
      {"ubergrosse", "übergrösse"},  // as the word is folded
      {"übregrösse", "übergrösse"},
      {"настойка", "настройка"},
      {"deadlockdetected", "deadlock detected"},
      {"sha265", "sha256"},
      {"2566", ""},
      {"xq", ""},
      {"valve", "valse"},
      {std::string(65, 'a'), ""},
      {"\xFF\xC3\x80\xE2", ""},
      {"valv\xC3", "valve"},
  };
  for (const auto& [word, expected] : cases)
    EXPECT_EQ(book.similar(word), expected) << word;
  EXPECT_EQ(book.similar("valce", 3), "valve, valse, halve");
}

}  // namespace
}  // namespace quorvex::textsearch
