#include "fulltext/searching/term_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/textsift.h"
#include "tests/fulltext/index_support.h"

namespace quorvex::textsearch {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TermKeys, FindTermsOfTextsAndTitlesByWhatTheyShare) {
  IndexUnderTest index;
  index.add("/1", "asyncio.gather os.path.join x86_64 strasse gr\u00F6sse Stra\u00DFen get_",
            {{"T", "Gr\u00F3sse textbox.gather asyncio.gather"}});
  std::string many = "strasse asyncio.gather 3.11 ";
  for (std::size_t i = 0; i < 100; ++i)
    many.append("get_").append(1, static_cast<char>('a' + i % 26)).append(i / 26 + 1, 'z') += ' ';
  index.add("/2", many);
  const auto reader = IndexReader::open(index.closed());
  const TermKeys keys(*reader);

  EXPECT_THAT(keys.likeWord("groesse"), ElementsAre("gr\u00F6sse"));
  EXPECT_THAT(keys.likeWord("grosse"), ElementsAre("gr\u00F3sse", "gr\u00F6sse"));
  EXPECT_THAT(keys.likeWord("str\u00E1sse"), ElementsAre("strasse"));
  EXPECT_THAT(keys.likeWord("asyncio::gather"), ElementsAre("asyncio.gather"));
  EXPECT_THAT(keys.likeWord("get"), ElementsAre("get_"));
  for (const char* word : {"strasse", "311", "", "_", "\xFF"})
    EXPECT_THAT(keys.likeWord(word), IsEmpty()) << word;

  const auto found = [&](std::string_view part) {
    std::string all;
    for (const TermKeys::JoinedTerm& joined : keys.withPart(part)) {
      all += joined.term.substr(0, joined.begin) + "[" +
             joined.term.substr(joined.begin, joined.end - joined.begin) + "]" +
             joined.term.substr(joined.end) + " ";
    }
    return all;
  };
  EXPECT_EQ(found("gather"), "asyncio.[gather] textbox.[gather] ");
  EXPECT_EQ(found("path/join"), "os.[path.join] ");
  EXPECT_EQ(found("x86"), "[x86]_64 ");
  for (const char* part : {"asyncio.gather", "x", "11", "strasse", "", "\xFF"})
    EXPECT_EQ(found(part), "") << part;
  EXPECT_EQ(keys.withPart("get").size(), TermKeys::mostTerms);
}

}  // namespace
}  // namespace quorvex::textsearch
