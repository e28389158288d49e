#include <gtest/gtest.h>

#include "common/bytes.h"
#include "common/checksum.h"
#include "fulltext/format/index_format.h"
#include "fulltext/reading/index_reader.h"
#include "tests/fulltext/index_support.h"

namespace quorvex {
namespace {

/// Takes an index apart for damaging and reassembles it with valid checksums.
class Damage {
 public:
  explicit Damage(std::string_view index) : _sections(*takeApart(index, indexContainer)) {}

  std::string& section(IndexSection kind) { return _sections[static_cast<std::size_t>(kind) - 1]; }
  std::string assembled() const {
    auto sections = _sections;
    std::string out;
    assembleContainer(indexContainer, sections, out);
    return out;
  }

 private:
  std::vector<std::string> _sections;
};

// The container's header, and an entry of its table.
constexpr std::size_t headerSize = 24;
constexpr std::size_t entrySize = 32;

Data healthyIndex() {
  IndexUnderTest index({{std::string(kTSStopWords), Array{"the"}}, {"n", -5}});
  const TSDocumentRef parent = TSDocumentCreateWithURL(*URL::fileURL("/parent"));
  for (int i = 0; i < 40; ++i) {
    const std::string path = "/page" + std::to_string(i);
    std::string text = "the word" + std::to_string(i);
    for (int j = 0; j < i; ++j)
      text += " common" + std::to_string(j % 30);
    index.add(path, text, {{"T", path}, {"D", text}});
    TSIndexAddDocumentWithText(index.ref(), TSDocumentCreateWithParent(parent, *URL::fileURL(path)),
                               text, false);
  }
  return index.closed();
}

/// Runs every reading operation; returns the amount of output.
std::size_t readAll(const std::string& bytes) {
  const TSIndexRef index = TSIndexOpenWithData(Data(bytes), std::nullopt);
  if (index == nullptr) return 0;
  const auto reader = IndexReader::open(Data(bytes));
  std::size_t found = TSIndexGetAnalysisProperties(index).size() + outline(index).size();
  for (TermDictionary::Cursor cursor(reader->terms(), 0); cursor.next();) {
    for (PostingCursor posting = reader->postings(cursor.entry()); posting.next();) {
      EXPECT_LT(posting.document(), reader->documents().size());
      ++found;
    }
  }
  for (std::uint32_t id = 0; id < reader->documents().size(); ++id) {
    found += reader->occurrences(id).size();
  }
  TermDictionary::Cursor cursor(reader->terms(), 0);
  cursor.seek("m");
  reader->find("nothing");
  return found;
}

TEST(DamagedIndex, TruncatedAnywhereIsNoIndex) {
  const Data index = healthyIndex();
  const std::string bytes(index.bytes());
  EXPECT_GT(readAll(bytes), 1000U);
  for (std::size_t size = 0; size < bytes.size(); size += 1 + size / 200) {
    EXPECT_EQ(TSIndexOpenWithData(Data(bytes.substr(0, size)), std::nullopt), nullptr) << size;
  }
  EXPECT_EQ(TSIndexOpenWithData(Data(bytes + "x"), std::nullopt), nullptr);
}

TEST(DamagedIndex, FlippedBitsAreNoticed) {
  const Data index = healthyIndex();
  const std::string healthy = outline(TSIndexOpenWithData(index, std::nullopt));
  const std::size_t tableEnd = headerSize + indexSectionCount * entrySize + 8;
  std::string bytes(index.bytes());
  for (std::size_t i = 0; i < bytes.size(); i += i < tableEnd ? 1 : 37) {
    bytes[i] = static_cast<char>(bytes[i] ^ (1 << (i % 8)));
    const TSIndexRef damaged = TSIndexOpenWithData(Data(bytes), std::nullopt);
    EXPECT_EQ(damaged == nullptr, i < tableEnd) << i;
    // A section is either unchanged or empty.
    EXPECT_TRUE(damaged == nullptr || outline(damaged).size() <= healthy.size() + 1000);
    bytes[i] = static_cast<char>(bytes[i] ^ (1 << (i % 8)));
  }
}

TEST(DamagedIndex, BlocksThatClaimTheSameBytes) {
  // Otherwise a small file could list one long URL for every document.
  const Data index = healthyIndex();
  Damage damage(index.bytes());
  std::string& section = damage.section(IndexSection::urls);
  for (std::size_t block = 1; block < 5; block += 2) {
    std::string offset;
    appendU64(offset, block == 1 ? 900 : 0);
    section.replace(block * 8, 8, offset);
  }
  const std::string listed = outline(TSIndexOpenWithData(Data(damage.assembled()), std::nullopt));
  // Three blocks are gone: the two whose offsets fall, and the one before the wrong offset.
  std::size_t missing = 0;
  for (std::size_t at = 0; (at = listed.find("(no URL)", at)) != listed.npos; ++at)
    ++missing;
  EXPECT_GE(missing, 3 * documentsPerBlock - 8);
}

TEST(DamagedIndex, OtherVersionsAndTables) {
  const Data index = healthyIndex();
  const std::size_t tableEnd = headerSize + indexSectionCount * entrySize;
  const auto opens = [&](std::size_t at, std::string_view wrong) {
    std::string bytes(index.bytes());
    bytes.replace(at, wrong.size(), wrong);
    std::string sum;
    appendU64(sum, checksum(std::string_view(bytes).substr(0, tableEnd)));
    bytes.replace(tableEnd, sum.size(), sum);
    readAll(bytes);
    return TSIndexOpenWithData(Data(bytes), std::nullopt) != nullptr;
  };
  EXPECT_TRUE(opens(0, "T"));
  EXPECT_FALSE(opens(0, "t"));
  EXPECT_FALSE(opens(8, "\3"));                                              // version
  EXPECT_FALSE(opens(12, std::string_view("\xFF\xFF\xFF\xFF", 4)));          // entries
  EXPECT_FALSE(opens(headerSize, "\2"));                                     // the same kind twice
  EXPECT_FALSE(opens(headerSize, "\x77"));                                   // one kind missing
  EXPECT_FALSE(opens(headerSize + 8, std::string_view("\0\0", 2)));          // inside the header
  EXPECT_FALSE(opens(headerSize + 16, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"));  // size
}

}  // namespace
}  // namespace quorvex
