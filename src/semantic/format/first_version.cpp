#include "semantic/format/first_version.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "common/bytes.h"
#include "common/checksum.h"
#include "common/property_codec.h"
#include "semantic/format/article_table.h"
#include "semantic/format/index_format.h"
#include "semantic/format/term_sections.h"

// Version 1, as far as it differs:
//
//   index      = magic:8*u8 version:u32 sections:u32 size:u64 checksum:u64
//                9*(offset:u64 size:u64) *section ; checksum: of all bytes after it
//   attributes = count:varint *(key:text (0 u8 | 1 i64 | 2 f64 | 3 text | 4 data:text))
//   articles   = *end:u32 *record                 ; end: of each record, from the end of these
//   record     = flags:u8 subPath:text title:text description:text
//                count:varint *keyword:text count:varint *(name:text link:text)
//                ; flag 1: excluded from search
//   termBlocks = *(terms:u32 postings:u32 firstPosting:u32)    ; offsets of every 16th term
//   terms      = *(shared:varint rest:text globalWeight:u8 articles:varint postingBytes:varint)

namespace quorvex::docuvault {

namespace {

constexpr std::size_t firstSectionCount = 9;
constexpr std::size_t checksumEnd = 32;
constexpr std::size_t headerSize = checksumEnd + firstSectionCount * 16;
constexpr std::size_t termsPerBlock = 16;
constexpr std::size_t blockBytes = 12;

/// In the order of the file.
struct FirstSections {
  std::string_view info, attributes, articles, scales, vectors, termBlocks, terms, postings, counts;
};

std::optional<FirstSections> splitSections(std::string_view bytes) {
  if (bytes.size() < headerSize) return std::nullopt;
  ByteReader header(bytes);
  if (header.bytes(indexMagic.size()) != indexMagic || header.u32() != firstIndexVersion ||
      header.u32() != firstSectionCount || header.u64() != bytes.size() ||
      header.u64() != checksum(bytes.substr(checksumEnd))) {
    return std::nullopt;
  }
  FirstSections s;
  for (std::string_view* section : {&s.info, &s.attributes, &s.articles, &s.scales, &s.vectors,
                                    &s.termBlocks, &s.terms, &s.postings, &s.counts}) {
    const std::uint64_t offset = header.u64();
    const std::uint64_t size = header.u64();
    if (offset > bytes.size() || size > bytes.size() - offset) return std::nullopt;
    *section = bytes.substr(offset, size);
  }
  return s;
}

bool hasFittingSizes(const FirstSections& sections, const IndexInfo& info) {
  const std::uint64_t blocks = (std::uint64_t{info.terms} + termsPerBlock - 1) / termsPerBlock;
  return sections.articles.size() / 4 >= info.articles &&
         sections.scales.size() == info.scales() * 4 &&
         sections.vectors.size() == std::uint64_t{info.articles} * info.dimensions &&
         sections.termBlocks.size() == blocks * blockBytes &&
         sections.counts.size() == info.postings / 2 + info.postings % 2;
}

bool areFinite(std::string_view floats) {
  for (ByteReader reader(floats); !reader.rest().empty();) {
    if (!std::isfinite(std::bit_cast<float>(reader.u32()))) return false;
  }
  return true;
}

std::optional<Dictionary> readAttributes(std::string_view section) {
  ByteReader reader(section);
  Dictionary attributes;
  for (std::uint64_t left = readCount(reader); left > 0 && reader.ok(); --left) {
    std::string key(reader.text());
    std::optional<Value> value;
    switch (reader.byte()) {
      case 0:
        value = reader.byte() != 0;
        break;
      case 1:
        value = static_cast<std::int64_t>(reader.u64());
        break;
      case 2:
        value = readDouble(reader);
        break;
      case 3:
        value = reader.text();
        break;
      case 4:
        value = Data(std::string(reader.text()));
        break;
      default:
        return std::nullopt;
    }
    attributes.insert_or_assign(std::move(key), *std::move(value));
  }
  return reader.ok() ? std::optional(std::move(attributes)) : std::nullopt;
}

ArticleRecord readRecord(std::string_view bytes) {
  ByteReader reader(bytes);
  ArticleRecord record;
  record.excludedFromSearch = (reader.byte() & 1U) != 0;
  record.subPath = reader.text();
  record.title = reader.text();
  record.description = reader.text();
  for (std::uint64_t left = readCount(reader); left > 0 && reader.ok(); --left) {
    record.keywords.emplace_back(reader.text());
  }
  for (std::uint64_t left = readCount(reader); left > 0 && reader.ok(); --left) {
    std::string name(reader.text());
    record.actions.push_back({std::move(name), std::string(reader.text())});
  }
  return record;
}

bool addArticles(IndexSections& sections, std::string_view articles, std::uint32_t count) {
  ArticleTableBuilder builder;
  ByteReader ends(articles.substr(0, std::size_t{count} * 4));
  const std::string_view records = articles.substr(std::size_t{count} * 4);
  std::size_t begin = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t end = ends.u32();
    // Records that overlapped would be copied once for each.
    const bool isSound = begin <= end && end <= records.size();
    builder.add(readRecord(isSound ? records.substr(begin, end - begin) : std::string_view()));
    if (isSound) begin = end;
  }
  return builder.take(sections);
}

/// Copies the terms of version 1, in order, each as far as it is sound.
class TermConverter {
 public:
  TermConverter(const FirstSections& from, const IndexInfo& info) : _from(from), _info(info) {}

  /// False if the blocks do not ascend.
  bool convert() {
    BlockStart start = blockStart(0);
    const std::size_t blocks = _from.termBlocks.size() / blockBytes;
    for (std::size_t block = 0; block < blocks; ++block) {
      const BlockStart end = blockStart(block + 1);
      if (end.terms < start.terms || end.postings < start.postings) return false;
      convertBlock(start, end, std::min(termsPerBlock, _info.terms - block * termsPerBlock));
      start = end;
    }
    return true;
  }
  TermSectionsBuilder& sections() { return _to; }

 private:
  struct BlockStart {
    std::size_t terms;
    std::size_t postings;
    std::uint64_t firstPosting;
  };

  BlockStart blockStart(std::size_t block) const {
    if (block * blockBytes >= _from.termBlocks.size()) {
      return {_from.terms.size(), _from.postings.size(), 0};
    }
    ByteReader reader(_from.termBlocks.substr(block * blockBytes));
    const std::size_t terms = reader.u32();
    const std::size_t postings = reader.u32();
    return {terms, postings, reader.u32()};
  }

  static ByteReader between(std::string_view section, std::size_t begin, std::size_t end) {
    return ByteReader(section.substr(std::min(begin, section.size()), end - begin));
  }

  void convertBlock(const BlockStart& start, const BlockStart& end, std::size_t count) {
    ByteReader terms = between(_from.terms, start.terms, end.terms);
    ByteReader postings = between(_from.postings, start.postings, end.postings);
    std::uint64_t posting = start.firstPosting;
    std::string term;
    for (; count > 0; --count) {
      const std::uint64_t shared = terms.varint();
      const std::string_view rest = terms.text();
      const std::uint8_t weight = terms.byte();
      const std::uint64_t articles = terms.varint();
      const std::string_view list = postings.bytes(terms.varint());
      // Terms of such a dictionary ascend, none is empty.
      if (!terms.ok() || !postings.ok() || shared > term.size() ||
          shared + rest.size() > maximumTermSize) {
        return;
      }
      term.resize(shared);
      term += rest;
      if (term <= _previous) return;
      _previous = term;
      _to.startTerm(term, weight);
      convertPostings(ByteReader(list), articles, posting);
      posting += articles;
    }
  }

  void convertPostings(ByteReader list, std::uint64_t count, std::uint64_t posting) {
    std::uint64_t article = 0;
    for (; count > 0 && article < _info.articles; --count, ++article, ++posting) {
      const std::uint64_t skipped = list.varint();
      if (!list.ok() || skipped >= _info.articles - article) return;
      article += skipped;
      if (posting / 2 >= _from.counts.size()) return;
      const auto pair = static_cast<unsigned char>(_from.counts[posting / 2]);
      _to.addPosting(static_cast<std::uint32_t>(article),
                     posting % 2 == 0 ? pair & 0xFU : std::uint32_t{pair} >> 4U);
    }
  }

  const FirstSections& _from;
  const IndexInfo& _info;
  TermSectionsBuilder _to;
  std::string _previous;
};

}  // namespace

std::string convertFirstVersion(std::string_view bytes) {
  const std::optional<FirstSections> from = splitSections(bytes);
  if (!from) return {};
  std::optional<IndexInfo> info = readInfo(from->info);
  if (!info || !hasFittingSizes(*from, *info) || !areFinite(from->scales)) return {};
  const std::optional<Dictionary> attributes = readAttributes(from->attributes);
  TermConverter terms(*from, *info);
  IndexSections sections;
  if (!attributes || !terms.convert() || !addArticles(sections, from->articles, info->articles)) {
    return {};
  }
  terms.sections().take(sections);
  info->terms = terms.sections().termCount();
  info->postings = terms.sections().postingCount();
  appendInfo(sections[Section::info], *info);
  appendProperties(sections[Section::attributes], *attributes);
  sections[Section::scales] = from->scales;
  sections[Section::vectors] = from->vectors;
  return sections.assemble();
}

}  // namespace quorvex::docuvault
