#include <atomic>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fulltext/reading/index_reader.h"
#include "platform/textsift.h"
#include "tests/fulltext/index_support.h"

namespace quorvex {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(Index, ReadsBackWhatWasAdded) {
  IndexUnderTest index({{std::string(kTSMinTermLength), 2},
                        {std::string(kTSTermChars), "'"},
                        {std::string(kTSStopWords), Array{"The", "of"}}});
  EXPECT_TRUE(index.add("/a", "The end of the END, don't x \u00E9", {{"T", "A"}, {"D", "first"}}));
  EXPECT_TRUE(index.add("/b", "end\u00C9 begin"));
  EXPECT_TRUE(index.add("/c", "", {{"T", ""}}));
  EXPECT_FALSE(index.add("/a", "again"));
  const TSIndexRef read = index.reopened();
  EXPECT_EQ(outline(read),
            "/a {D=first,T=A} don't end\n"
            "/b begin end\u00E9\n"
            "/c {T=}\n");
  EXPECT_EQ(TSIndexGetAnalysisProperties(read), index.properties());
  EXPECT_EQ(TSIndexCopyTermStringForTermID(read, 3), "end\u00E9");
  EXPECT_EQ(TSIndexCopyTermStringForTermID(read, 4), std::nullopt);
  EXPECT_TRUE(TSIndexCopyTermIDArrayForDocumentID(read, 3).empty());
}

TEST(Index, KeepsWhatRankingAndPhrasesNeed) {
  IndexUnderTest index(Dictionary{{std::string(kTSStopWords), Array{"the", "a"}}});
  index.add("/1", "to be the a or not to be");
  index.add("/2", "");
  std::string often;
  for (int i = 0; i < 300; ++i)
    often += "be ";
  index.add("/3", often + "or");
  const auto reader = IndexReader::open(index.closed());
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->documents().length(0), 6U);
  EXPECT_EQ(reader->documents().length(1), 0U);
  EXPECT_EQ(reader->documents().averageLength(), 307.0 / 3);
  const auto postings = [&](std::string_view term) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> found;
    const std::optional<TermEntry> entry = reader->terms().find(term);
    if (!entry) return found;
    for (PostingCursor cursor = reader->postings(*entry); cursor.next();) {
      found.emplace_back(cursor.document(), cursor.frequency());
    }
    return found;
  };
  EXPECT_THAT(postings("be"), ElementsAre(Pair(0, 2), Pair(2, 255)));
  EXPECT_THAT(postings("not"), ElementsAre(Pair(0, 1)));
  EXPECT_THAT(postings("the"), ElementsAre());
  std::string text;
  for (const std::uint32_t term : reader->occurrences(0)) {
    text += (term == IndexReader::noTerm ? "*" : *reader->terms().term(term)) + " ";
  }
  EXPECT_EQ(text, "to be * or not to be ");
  EXPECT_EQ(reader->occurrences(2).size(), 301U);
  EXPECT_TRUE(reader->occurrences(7).empty());
}

TEST(Index, DocumentsFormAForest) {
  IndexUnderTest index;
  const TSDocumentRef book = TSDocumentCreateWithURL(*URL::fileURL("/book"));
  const TSDocumentRef chapter = TSDocumentCreateWithParent(book, *URL::fileURL("/chapter"));
  EXPECT_TRUE(TSIndexAddDocumentWithText(index.ref(), chapter, "inner words", false));
  EXPECT_TRUE(index.add("/other", "outer"));
  EXPECT_TRUE(index.add("/chapter", "same name, other place"));
  // Adding its child created it, without text.
  EXPECT_TRUE(TSIndexAddDocumentWithText(index.ref(), book, "cover", false));
  EXPECT_FALSE(TSIndexAddDocumentWithText(index.ref(), book, "cover", false));
  const TSIndexRef read = index.reopened();
  EXPECT_EQ(outline(read),
            "/book cover\n"
            "  /chapter inner words\n"
            "/other outer\n"
            "/chapter name other place same\n");
  EXPECT_EQ(TSIndexGetDocumentID(read, chapter), 1U);
  const TSDocumentRef stranger = TSDocumentCreateWithParent(chapter, *URL::fileURL("/book"));
  EXPECT_EQ(TSIndexGetDocumentID(read, stranger), std::nullopt);
  EXPECT_EQ(TSIndexDocumentIteratorCreate(read, stranger), nullptr);
}

TEST(Index, ReplacedTextsLeaveNothingBehind) {
  IndexUnderTest index;
  index.add("/a", "old words only", {{"T", "old"}});
  index.add("/b", "shared words");
  EXPECT_TRUE(index.add("/a", "new words", {}, true));
  EXPECT_EQ(outline(index.reopened()), "/a new words\n/b shared words\n");

  IndexUnderTest bulk;
  const TSDocumentRef same = TSDocumentCreateWithURL(*URL::fileURL("/a"));
  const auto content = [](std::size_t i) {
    return TSDocumentContent{"text" + std::to_string(i), {{"T", std::to_string(i)}}};
  };
  EXPECT_THAT(TSIndexAddDocuments(bulk.ref(), {same, nullptr, same}, true, 2, content),
              ElementsAre(true, false, true));
  EXPECT_EQ(outline(bulk.reopened()), "/a {T=2} text2\n");

  IndexUnderTest kept;
  EXPECT_THAT(TSIndexAddDocuments(kept.ref(), {same, same}, false, 2, content),
              ElementsAre(true, false));
  EXPECT_EQ(outline(kept.reopened()), "/a {T=0} text0\n");
}

/// A book with shared and rare words, empty pages, and more documents than fit in a block.
std::vector<std::string> randomBook(std::size_t pages) {
  std::mt19937 random(3);
  std::vector<std::string> texts(pages);
  for (std::string& text : texts) {
    for (auto left = random() % 60; left > 0; --left) {
      text += "w" + std::to_string(random() % (1 + random() % 900)) + " ";
    }
  }
  return texts;
}

TEST(Index, BytesDoNotDependOnWorkers) {
  const std::vector<std::string> texts = randomBook(333);
  std::vector<TSDocumentRef> documents;
  IndexUnderTest oneByOne;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string path = "/" + std::to_string(i % 50) + "/" + std::to_string(i);
    documents.push_back(TSDocumentCreateWithURL(*URL::fileURL(path)));
    oneByOne.add(path, texts[i],
                 {{"T", texts[i].substr(0, 9)}, {"K" + std::to_string(i % 3), "v"}});
  }
  const std::string expected(oneByOne.closed().bytes());
  for (const unsigned workers : {0U, 1U, 2U, 3U, 8U, 1000U}) {
    IndexUnderTest index;
    std::vector<std::atomic<int>> calls(texts.size());
    TSIndexAddDocuments(index.ref(), documents, false, workers, [&](std::size_t i) {
      ++calls[i];
      return TSDocumentContent{texts[i],
                               {{"T", texts[i].substr(0, 9)}, {"K" + std::to_string(i % 3), "v"}}};
    });
    EXPECT_TRUE(std::ranges::all_of(calls, [](const auto& count) { return count == 1; }));
    EXPECT_EQ(index.closed().bytes(), expected) << workers << " workers";
  }
  for (const unsigned unplaced : {0U, 1U}) {
    IndexUnderTest index;
    const auto one = TSIndexCreateAnalysis(index.ref());
    const auto other = TSIndexCreateAnalysis(index.ref());
    std::vector<TSAnalyzedContentRef> analyzed(texts.size());
    for (std::size_t i = texts.size(); i-- > 0;) {
      analyzed[i] =
          (i % 3 == 0 ? one : other)
              ->analyze(
                  {texts[i], {{"T", texts[i].substr(0, 9)}, {"K" + std::to_string(i % 3), "v"}}});
    }
    if (unplaced > 0) one->analyze({"found nowhere", {}});
    TSIndexAddDocuments(index.ref(), documents, false, 2, [&](std::size_t i) {
      return TSDocumentContent{.text = {}, .properties = {}, .analyzed = analyzed[i]};
    });
    EXPECT_EQ(index.closed().bytes(), expected) << unplaced << " unplaced";
  }
  const auto reader = IndexReader::open(Data(expected));
  for (std::uint32_t id = 0; id < texts.size(); ++id) {
    std::string text;
    for (const std::uint32_t term : reader->occurrences(id)) {
      text += *reader->terms().term(term) + " ";
    }
    EXPECT_EQ(text, texts[id]);
    EXPECT_EQ(reader->url(id), TSDocumentCopyURL(documents[id])->absoluteString());
    EXPECT_EQ(*reader->properties(id)->find("T")->second.string(), texts[id].substr(0, 9));
  }
}

TEST(Index, FailingContentEndsTheBulk) {
  IndexUnderTest index;
  const std::vector<TSDocumentRef> documents(40, TSDocumentCreateWithURL(*URL::fileURL("/x")));
  EXPECT_THROW(TSIndexAddDocuments(index.ref(), documents, true, 3,
                                   [](std::size_t i) -> TSDocumentContent {
                                     if (i == 20) throw std::runtime_error("page is gone");
                                     return {};
                                   }),
               std::runtime_error);
  EXPECT_EQ(outline(index.reopened()), "/x {}\n");
}

TEST(Index, NullAndClosedIndexesAreHarmless) {
  IndexUnderTest closed;
  closed.add("/a", "text");
  const std::string bytes(closed.closed().bytes());
  const TSIndexRef read = TSIndexOpenWithData(Data(bytes), std::nullopt);
  const TSDocumentRef document = TSDocumentCreateWithURL(*URL::fileURL("/b"));
  for (const TSIndexRef& index : {TSIndexRef(), closed.ref(), read}) {
    EXPECT_FALSE(TSIndexAddDocumentWithText(index, document, "x", true));
    EXPECT_FALSE(TSIndexSetDocumentProperties(index, document, {}));
    EXPECT_THAT(TSIndexAddDocuments(index, {document}, true, 2, nullptr), ElementsAre(false));
    EXPECT_EQ(TSIndexGetDocumentID(index, document), std::nullopt);
    EXPECT_EQ(TSIndexCopyDocumentProperties(index, document), std::nullopt);
    if (index != read) {
      EXPECT_EQ(TSIndexDocumentIteratorCreate(index, nullptr), nullptr);
      EXPECT_EQ(TSIndexCopyTermStringForTermID(index, 0), std::nullopt);
    }
    TSIndexClose(index);
  }
  EXPECT_EQ(closed.closed().bytes(), bytes);
  EXPECT_EQ(TSIndexDocumentIteratorCopyNext(nullptr), nullptr);
  EXPECT_EQ(TSDocumentCopyURL(nullptr), std::nullopt);
  EXPECT_TRUE(TSIndexGetAnalysisProperties(nullptr).empty());
}

TEST(Index, RefusesPropertiesOfTheWrongKind) {
  const auto created = [](const Dictionary& properties) {
    return TSIndexCreateWithMutableData(std::make_shared<std::string>(), {}, TSIndexType::inverted,
                                        properties) != nullptr;
  };
  EXPECT_TRUE(created({}));
  EXPECT_TRUE(created({{"other", Array{"a", 1}}, {std::string(kTSMinTermLength), -1}}));
  EXPECT_FALSE(created({{std::string(kTSMinTermLength), "1"}}));
  EXPECT_FALSE(created({{std::string(kTSTermChars), 1}}));
  EXPECT_FALSE(created({{std::string(kTSStopWords), "the"}}));
  EXPECT_FALSE(created({{std::string(kTSStopWords), Array{1}}}));
  EXPECT_FALSE(created({{"other", Dictionary{}}}));
  EXPECT_EQ(TSIndexCreateWithMutableData(nullptr, {}, TSIndexType::inverted, {}), nullptr);
  IndexUnderTest index;
  index.add("/a", "");
  EXPECT_FALSE(TSIndexSetDocumentProperties(
      index.ref(), TSDocumentCreateWithURL(*URL::fileURL("/a")), {{"n", 1}}));
}

TEST(Index, AnEmptyOneAndItsName) {
  auto buffer = std::make_shared<std::string>("what was there before");
  TSIndexClose(TSIndexCreateWithMutableData(buffer, "main", TSIndexType::inverted, {}));
  const Data data(*buffer);
  EXPECT_EQ(outline(TSIndexOpenWithData(data, std::nullopt)), "");
  EXPECT_NE(TSIndexOpenWithData(data, "main"), nullptr);
  EXPECT_EQ(TSIndexOpenWithData(data, "side"), nullptr);
}

}  // namespace
}  // namespace quorvex
