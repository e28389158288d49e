#include <gtest/gtest.h>

#include "fulltext/format/operator_table.h"
#include "fulltext/reading/index_reader.h"
#include "tests/fulltext/index_support.h"

namespace quorvex {
namespace {

struct Page {
  std::string text;
  std::string title = {};
};

Data indexOf(const std::vector<Page>& pages, unsigned workers = 2) {
  IndexUnderTest index;
  std::vector<TSDocumentRef> documents;
  for (std::size_t i = 0; i < pages.size(); ++i)
    documents.push_back(TSDocumentCreateWithURL(*URL::fileURL("/" + std::to_string(i))));
  TSIndexAddDocuments(index.ref(), documents, true, workers, [&](std::size_t i) {
    return TSDocumentContent{.text = pages[i].text, .properties = {{"T", pages[i].title}}};
  });
  index.add("/0", pages[0].text + " replaced =~", {{"T", pages[0].title}}, true);
  return index.closed();
}

/// "sign document*frequency ..." for each operator.
std::string listed(const IndexReader& reader) {
  std::string list;
  for (TermDictionary::Cursor cursor(reader.operators(), 0); cursor.next();) {
    list += std::string(list.empty() ? "" : ", ").append(cursor.term());
    for (PostingCursor posting = reader.operatorPostings(cursor.entry()); posting.next();)
      list += " " + std::to_string(posting.document()) + "*" + std::to_string(posting.frequency());
  }
  return list;
}

TEST(Operators, AreRecordedByDocument) {
  std::string many;
  for (int i = 0; i < 300; ++i)
    many += "a ++ ";
  const std::vector<Page> pages = {{"a ->> b"}, {""}, {many}, {"c ->> d->>e => f"}};
  for (const unsigned workers : {1U, 3U})
    EXPECT_EQ(listed(*IndexReader::open(indexOf(pages, workers))),
              "++ 2*255, ->> 0*1 3*2, => 3*1, =~ 0*1");
  EXPECT_EQ(listed(*IndexReader::open(indexOf({{"just words."}}))), "=~ 0*1");
}

TEST(Operators, ThatMostPagesHaveAreLeftOut) {
  const std::string signs = "!#$%&*+<=>?@^|~";
  std::vector<Page> pages;
  for (int i = 0; i < 42; ++i) {
    Page& page = pages.emplace_back(Page{i < 21 ? "a == b" : "a =~ b"});
    // All pairs and triples are more than the index keeps; it prefers what two pages have.
    for (std::size_t pair = 0; i < 2 && pair < 15 * 15 * 15; ++pair) {
      page.text += {' ', signs[pair / 225], signs[pair / 15 % 15], signs[pair % 15], ' '};
      page.text +=
          {' ', signs[pair / 225], i == 0 ? '/' : '\\', signs[pair / 15 % 15], signs[pair % 15]};
    }
  }
  const auto reader = IndexReader::open(indexOf(pages));
  EXPECT_EQ(reader->operators().size(), 4096U);
  EXPECT_TRUE(reader->operators().find("=="));  // on 21
  EXPECT_FALSE(reader->operators().find("=~"));
  EXPECT_TRUE(reader->operators().find("~~~") && reader->operators().find("!/!!"));
  EXPECT_FALSE(reader->operators().find("~\\~~"));
}

TEST(Operators, OfDamagedSections) {
  const std::string section = encodeOperators({"->", "=>"}, {2, 1}, {3, 5, 4}, "\1\2\3");
  EXPECT_EQ(OperatorTable(section).operators().find("=>").value().documentCount, 1U);
  for (std::size_t size = 0; size + 3 < section.size(); ++size)
    EXPECT_FALSE(OperatorTable(section.substr(0, size)).operators().find("->")) << size;
}

TEST(Operators, TakePartInSearches) {
  const auto search = TSSearchCreateWithIndex(
      TSIndexOpenWithData(indexOf({{"json a ->> b, a ->> b, x := y"},
                                   {"json path a ->> b and more words about other things"},
                                   {"assign x := y"},
                                   {"stream and more", "std::operator<<,>>(stream)"},
                                   {"stream a << b, an operator"},
                                   {"operator words"}}),
                          std::nullopt));
  // Of an unknown one, the longest beginning that the index has.
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"->>", "/0 /1"},   {"path ->>", "/1 /0"}, {"->>!", "/0 /1"},    {"<<", "/4 /3"},
      {":= -json", "/2"}, {"\"->>\"", ""},       {"assign ->|", "/2"}, {"~>", ""},
  };
  for (const auto& [query, expected] : cases) {
    const TSSearchAnswer answer = TSSearchFindDocuments(search, query, {.language = "en"}, 10);
    std::string found;
    for (const TSSearchHit& hit : answer.hits)
      found += (found.empty() ? "" : " ") + TSSearchCopyDocumentURL(search, hit.document)->path();
    EXPECT_EQ(found, expected) << query;
    EXPECT_EQ(answer.state == TSSearchState::noWords, expected.empty()) << query;
  }
  EXPECT_EQ(TSSearchFindDocuments(search, "->>", {.isPlainText = true}, 10).state,
            TSSearchState::noWords);
}

}  // namespace
}  // namespace quorvex
