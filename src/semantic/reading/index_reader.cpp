#include "semantic/reading/index_reader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace quorvex::docuvault {

std::optional<SemanticIndexReader> SemanticIndexReader::open(std::string_view bytes) {
  const std::optional<Sections> sections = splitSections(bytes);
  if (!sections) return std::nullopt;
  SemanticIndexReader reader;
  reader._sections = *sections;
  if (!reader.readInfo() || !reader.hasSoundScales() || !reader.hasBlocksInOrder())
    return std::nullopt;
  reader.measureVectors();
  return reader;
}

void SemanticIndexReader::measureVectors() {
  _inverseNorms.reserve(_articles);
  for (std::uint32_t article = 0; article < _articles; ++article) {
    const std::int8_t* numbers = vector(article);
    std::int32_t squared = 0;
    for (std::uint32_t i = 0; i < _dimensions; ++i) {
      squared += std::int32_t{numbers[i]} * std::int32_t{numbers[i]};
    }
    _inverseNorms.push_back(squared == 0 ? 0 : 1 / std::sqrt(static_cast<float>(squared)));
  }
}

/// Checks the counts against the sizes of all sections of fixed-size items, so that no wrong count
/// is trusted.
bool SemanticIndexReader::readInfo() {
  const std::string_view bytes = bytesOf(Section::info);
  ByteReader info(bytes);
  _articles = info.u32();
  _terms = info.u32();
  _dimensions = info.u32();
  _excluded = info.u32();
  const std::uint64_t postings = info.u64();
  _shareOfVariance = readDouble(info);
  if (!info.ok() || _dimensions > mostDimensions || !(_shareOfVariance >= 0) ||
      !(_shareOfVariance <= 1)) {
    return false;
  }
  _language = bytes.substr(infoSize);
  const std::uint64_t articles = _articles;
  const std::uint64_t blocks = (std::uint64_t{_terms} + termBlockSize - 1) / termBlockSize;
  return bytesOf(Section::articles).size() >= articles * 4 &&
         bytesOf(Section::scales).size() == (articles * 2 + _dimensions) * 4 &&
         bytesOf(Section::vectors).size() == articles * _dimensions &&
         bytesOf(Section::termBlocks).size() == blocks * termBlockBytes &&
         bytesOf(Section::counts).size() == postings / 2 + postings % 2;
}

bool SemanticIndexReader::hasSoundScales() const {
  for (std::size_t i = 0; i < std::size_t{_articles} * 2 + _dimensions; ++i) {
    if (!std::isfinite(scale(i))) return false;
  }
  return true;
}

float SemanticIndexReader::scale(std::size_t index) const {
  std::uint32_t bits = 0;
  std::memcpy(&bits, bytesOf(Section::scales).data() + index * 4, 4);
  if constexpr (std::endian::native == std::endian::big) bits = __builtin_bswap32(bits);
  return std::bit_cast<float>(bits);
}

const std::int8_t* SemanticIndexReader::vector(std::uint32_t article) const {
  return reinterpret_cast<const std::int8_t*>(bytesOf(Section::vectors).data()) +
         std::size_t{article} * _dimensions;
}

std::string_view SemanticIndexReader::recordBytes(std::uint32_t article) const {
  const std::string_view section = bytesOf(Section::articles);
  const std::size_t begin =
      article == 0 ? 0 : ByteReader(section.substr((article - 1) * 4ULL)).u32();
  const std::size_t end = ByteReader(section.substr(article * 4ULL)).u32();
  const std::string_view records = section.substr(_articles * 4ULL);
  return begin <= end && end <= records.size() ? records.substr(begin, end - begin)
                                               : std::string_view();
}

bool SemanticIndexReader::isExcluded(std::uint32_t article) const {
  return (ByteReader(recordBytes(article)).byte() & 1U) != 0;
}

std::string_view SemanticIndexReader::subPath(std::uint32_t article) const {
  ByteReader reader(recordBytes(article));
  reader.byte();
  return reader.text();
}

ArticleRecord SemanticIndexReader::record(std::uint32_t article) const {
  ByteReader reader(recordBytes(article));
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

void SemanticIndexReader::forEachTermOfBlock(
    std::size_t block,
    const std::function<bool(std::string_view, const IndexedTerm&)>& visit) const {
  const BlockStart start = blockStart(block);
  const BlockStart end = blockStart(block + 1);
  ByteReader terms(between(Section::terms, start.terms, end.terms));
  ByteReader postings(between(Section::postings, start.postings, end.postings));
  IndexedTerm entry;
  entry.firstPosting = start.firstPosting;
  std::string term;
  const std::size_t first = block * termBlockSize;
  for (std::size_t id = first; id < std::min<std::size_t>(first + termBlockSize, _terms); ++id) {
    const std::uint64_t shared = terms.varint();
    if (shared > term.size()) return;
    term.resize(shared);
    term += terms.text();
    entry.globalWeight = static_cast<float>(terms.byte()) / 255.0F;
    entry.articles = terms.varint();
    entry.postings = postings.bytes(terms.varint());
    if (!terms.ok() || !postings.ok() || !visit(term, entry)) return;
    entry.firstPosting += entry.articles;
  }
}

std::size_t SemanticIndexReader::blockCount() const {
  return bytesOf(Section::termBlocks).size() / termBlockBytes;
}

SemanticIndexReader::BlockStart SemanticIndexReader::blockStart(std::size_t block) const {
  if (block >= blockCount()) {
    return {bytesOf(Section::terms).size(), bytesOf(Section::postings).size(), 0};
  }
  ByteReader header(bytesOf(Section::termBlocks).substr(block * termBlockBytes));
  const std::size_t terms = header.u32();
  const std::size_t postings = header.u32();
  return {terms, postings, header.u32()};
}

bool SemanticIndexReader::hasBlocksInOrder() const {
  BlockStart start;
  for (std::size_t block = 0; block <= blockCount(); ++block) {
    const BlockStart next = blockStart(block);
    if (next.terms < start.terms || next.postings < start.postings) return false;
    start = next;
  }
  return true;
}

std::string_view SemanticIndexReader::between(Section section, std::size_t begin,
                                              std::size_t end) const {
  return bytesOf(section).substr(begin, end - begin);
}

std::optional<IndexedTerm> SemanticIndexReader::find(std::string_view term) const {
  // Finds the last block whose first term is not after `term`.
  std::size_t low = 0;
  std::size_t high = blockCount();
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    ByteReader first(
        between(Section::terms, blockStart(middle).terms, blockStart(middle + 1).terms));
    first.varint();
    if (first.text() <= term) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  std::optional<IndexedTerm> found;
  if (low == 0) return found;
  forEachTermOfBlock(low - 1, [&](std::string_view candidate, const IndexedTerm& entry) {
    if (candidate == term) found = entry;
    return candidate < term;
  });
  return found;
}

void SemanticIndexReader::forEachTerm(const std::function<void(const IndexedTerm&)>& visit) const {
  for (std::size_t block = 0; block < blockCount(); ++block) {
    forEachTermOfBlock(block, [&](std::string_view, const IndexedTerm& entry) {
      visit(entry);
      return true;
    });
  }
}

}  // namespace quorvex::docuvault
