#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "common/bytes.h"
#include "common/checksum.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/code_table.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/posting_lists.h"
#include "text/term_dictionary.h"
#include "text/term_table.h"

namespace quorvex {
namespace {

/// Powers of two and their neighbours.
std::vector<std::uint64_t> edges(unsigned bits) {
  std::vector<std::uint64_t> values = {0};
  for (unsigned bit = 0; bit < bits; ++bit) {
    const std::uint64_t power = std::uint64_t{1} << bit;
    values.insert(values.end(), {power - 1, power, power + 1});
  }
  values.push_back(bits == 64 ? UINT64_MAX : (std::uint64_t{1} << bits) - 1);
  return values;
}

TEST(Bytes, VarintsAtTheirEdges) {
  for (const std::uint64_t value : edges(64)) {
    std::string bytes;
    appendVarint(bytes, value);
    ByteReader reader(bytes);
    EXPECT_EQ(reader.varint(), value);
    EXPECT_TRUE(reader.ok() && reader.rest().empty());
    EXPECT_EQ(ByteReader(bytes).varint32(), value <= UINT32_MAX ? value : 0);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      ByteReader cut(std::string_view(bytes).substr(0, size));
      EXPECT_EQ(cut.varint(), 0U);
      EXPECT_FALSE(cut.ok());
    }
  }
  for (const std::string& overlong : {std::string(10, '\xFF'), std::string(9, '\xFF') + '\2'}) {
    ByteReader reader(overlong);
    reader.varint();
    EXPECT_FALSE(reader.ok());
  }
}

TEST(Bytes, AFailedReadEndsTheReader) {
  ByteReader reader(
      "\x05"
      "abc");
  EXPECT_EQ(reader.text(), "");
  EXPECT_FALSE(reader.ok());
  EXPECT_EQ(reader.byte() + reader.u32() + reader.u64() + reader.varint(), 0U);
  EXPECT_EQ(ByteReader("abc").bytes(UINT64_MAX), "");
}

TEST(Checksum, IsTheKnownOne) {
  EXPECT_EQ(checksum(""), 0xEF46DB3751D8E999U);
  EXPECT_EQ(checksum("a"), 0xD24EC4F1A98C6E5BU);
  EXPECT_EQ(checksum("abc"), 0x44BC2CF5AD770999U);
  EXPECT_EQ(checksum("Nobody inspects the spammish repetition"), 0xFBCEA83C8A378BF1U);
}

TEST(OccurrenceCode, AtItsEdges) {
  std::vector<std::uint64_t> values = edges(32);
  for (const std::uint64_t limit : {0xA0U, 0x58A0U, 0x758A0U}) {
    values.insert(values.end(), {limit - 1, limit, limit + 1});
  }
  for (const std::uint64_t value : values) {
    const auto code = static_cast<std::uint32_t>(value);
    std::string bytes;
    appendCode(bytes, code);
    const char* position = bytes.data();
    EXPECT_EQ(readCode(position, bytes.data() + bytes.size()), code);
    EXPECT_EQ(position, bytes.data() + bytes.size());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      position = bytes.data();
      EXPECT_EQ(readCode(position, bytes.data() + size), 0U);
      EXPECT_EQ(position, bytes.data() + size);
    }
  }
}

TEST(BlockTable, HasNoBlocksWhoseOffsetsDoNotAscend) {
  const auto blocks = [](const std::vector<std::uint64_t>& offsets, std::uint64_t entries) {
    std::string bytes;
    for (const std::uint64_t offset : offsets)
      appendU64(bytes, offset);
    const std::string all = bytes + "abcdef";
    const BlockTable table(all, entries, 2);
    std::string text;
    for (std::uint64_t i = 0; i < table.blockCount(); ++i) {
      text.append(table.block(i)) += '|';
    }
    return text + std::string(table.block(table.blockCount()));
  };
  EXPECT_EQ(blocks({0, 2, 5}, 6), "ab|cde|f|");
  EXPECT_EQ(blocks({0, 2, 5}, 5), "ab|cde|f|");
  EXPECT_EQ(blocks({1, 1, 6}, 6), "|bcdef||");
  EXPECT_EQ(blocks({0, 3, 2}, 6), "");
  EXPECT_EQ(blocks({0, 2, 7}, 6), "ab|||");
  EXPECT_EQ(blocks({0, 2, UINT64_MAX}, 6), "ab|||");
  EXPECT_EQ(blocks({0}, 6), "");
  EXPECT_EQ(blocks({}, 0), "");
  EXPECT_EQ(blocks({0}, UINT64_MAX), "");
}

TEST(TermTable, NumbersTermsInOrderOfArrival) {
  std::mt19937 random(7);
  TermTable table;
  std::map<std::string, std::uint32_t> expected;
  for (int i = 0; i < 50000; ++i) {
    const std::string term(random() % 20, static_cast<char>('a' + random() % 3));
    const std::string longer = term + std::to_string(random() % 3000);
    const auto [entry, added] = expected.emplace(longer, expected.size());
    ASSERT_EQ(table.insert(longer), entry->second);
  }
  ASSERT_EQ(table.size(), expected.size());
  for (const auto& [term, number] : expected)
    ASSERT_EQ(table.term(number), term);

  TermTable other;
  std::vector<std::string_view> terms;
  for (unsigned i = 1; i < 20000; ++i)
    terms.push_back(table.term(static_cast<std::uint32_t>(random() % i)));
  TermTable together;
  for (std::size_t begin = 0; begin < terms.size();) {
    const auto some = std::span(terms).subspan(begin).first(
        std::min<std::size_t>(random() % 200, terms.size() - begin));
    std::vector<std::uint32_t> numbers(some.size());
    together.insertAll(some, numbers);
    for (std::size_t i = 0; i < some.size(); ++i)
      ASSERT_EQ(numbers[i], other.insert(some[i]));
    begin += some.size();
  }
  EXPECT_EQ(table.insert(""), expected.size());
  EXPECT_EQ(table.insert(std::string_view("a\0", 2)), expected.size() + 1);
}

TEST(TermDictionary, FindsWhatASortedListHolds) {
  std::mt19937 random(11);
  for (const std::size_t count : {0U, 1U, 127U, 128U, 129U, 500U}) {
    std::vector<std::string> terms;
    while (terms.size() < count)
      terms.push_back(std::to_string(random() % 100000));
    std::ranges::sort(terms);
    terms.erase(std::unique(terms.begin(), terms.end()), terms.end());
    const std::vector<std::string_view> views(terms.begin(), terms.end());
    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> documents;
    for (std::size_t i = 0; i < views.size(); ++i) {
      counts.push_back(static_cast<std::uint32_t>(1 + i % 3));
      for (std::uint32_t d = 0; d < counts.back(); ++d)
        documents.push_back(d * 200);
    }
    std::string postings;
    const std::string section = encodeTerms(views, counts, documents, postings);
    const TermDictionary dictionary{LazyBytes(section)};
    ASSERT_EQ(dictionary.size(), terms.size());
    std::uint64_t posting = 0;
    for (std::uint32_t id = 0; id < terms.size(); ++id) {
      EXPECT_EQ(dictionary.term(id), terms[id]);
      const std::optional<TermEntry> entry = dictionary.find(terms[id]);
      ASSERT_TRUE(entry);
      EXPECT_EQ(entry->id, id);
      EXPECT_EQ(entry->firstPosting, posting);
      posting += counts[id];
    }
    const std::string codeSection = encodeCodes(counts);
    const CodeTable codes(codeSection);
    const std::vector<std::uint32_t> order = termsByDocumentCount(counts, 3);
    for (std::uint32_t i = 0; i < order.size(); ++i)
      EXPECT_EQ(codes.code(*dictionary.find(terms[order[i]]), dictionary), i + 1);
    for (int i = 0; i < 200; ++i) {
      const std::string wanted = std::to_string(random() % 100000);
      const auto expected = std::ranges::lower_bound(terms, wanted);
      TermDictionary::Cursor cursor(dictionary, 0);
      ASSERT_EQ(cursor.seek(wanted), expected != terms.end());
      EXPECT_TRUE(expected == terms.end() || cursor.term() == *expected);
      EXPECT_EQ(dictionary.find(wanted).has_value(),
                expected != terms.end() && *expected == wanted);
    }
    EXPECT_EQ(dictionary.term(dictionary.size()), std::nullopt);
  }
}

TEST(TermDictionary, HasNoGroupTooSmallForItsTerms) {
  for (const std::uint64_t size : {511U, 512U}) {
    std::string directory("\0\1a", 3);
    for (const std::uint64_t number : {size, std::uint64_t{0}, std::uint64_t{0}})
      appendVarint(directory, number);
    std::string section;
    appendVarint(section, 128);
    section += '\0';
    appendText(section, directory);
    section.append(size, '\0');
    EXPECT_EQ(TermDictionary{LazyBytes(section)}.size(), size < 512 ? 0U : 128U);
  }
}

}  // namespace
}  // namespace quorvex
