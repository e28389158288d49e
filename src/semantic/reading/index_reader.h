#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "semantic/format/article_record.h"
#include "semantic/format/index_format.h"

namespace quorvex::docuvault {

/// A term of the index and the location of its postings.
struct IndexedTerm {
  float globalWeight = 0;
  std::uint64_t articles = 0;
  std::string_view postings;
  std::uint64_t firstPosting = 0;
};

/// Reads an index in place; the bytes must outlive it. Thread-safe. Bytes that pass open() may
/// still be inconsistent: reads then return less, but never go out of bounds.
class SemanticIndexReader {
 public:
  static std::optional<SemanticIndexReader> open(std::string_view bytes);

  std::uint32_t articles() const { return _articles; }
  std::uint32_t terms() const { return _terms; }
  std::uint32_t dimensions() const { return _dimensions; }
  std::uint32_t excludedArticles() const { return _excluded; }
  double shareOfVariance() const { return _shareOfVariance; }
  std::string_view language() const { return _language; }
  const Sections& sections() const { return _sections; }

  bool isExcluded(std::uint32_t article) const;
  std::string_view subPath(std::uint32_t article) const;
  ArticleRecord record(std::uint32_t article) const;

  float rowScale(std::uint32_t article) const { return scale(article); }
  /// Length of the article's vector in the reduced space.
  float vectorLength(std::uint32_t article) const { return scale(_articles + article); }
  float inverseEnergy(std::uint32_t dimension) const { return scale(2 * _articles + dimension); }
  /// The article's direction in the reduced space: `dimensions()` numbers, not normalised.
  const std::int8_t* vector(std::uint32_t article) const;
  /// 1 / length of vector(article); 0 for the zero vector.
  float inverseVectorNorm(std::uint32_t article) const { return _inverseNorms[article]; }

  std::optional<IndexedTerm> find(std::string_view term) const;
  void forEachTerm(const std::function<void(const IndexedTerm&)>& visit) const;
  /// Visits the article and count code of each posting, in ascending order, while `visit` is true.
  template <typename Visit>
  void forEachPosting(const IndexedTerm& term, Visit visit) const;

 private:
  bool readInfo();
  bool hasSoundScales() const;
  void measureVectors();
  std::string_view recordBytes(std::uint32_t article) const;
  float scale(std::size_t index) const;
  /// Visits the terms of a block with their text while `visit` is true.
  void forEachTermOfBlock(
      std::size_t block,
      const std::function<bool(std::string_view term, const IndexedTerm& entry)>& visit) const;
  /// Where a block begins; for the number after the last block, where the sections end.
  struct BlockStart {
    std::size_t terms = 0;
    std::size_t postings = 0;
    std::uint64_t firstPosting = 0;
  };
  std::size_t blockCount() const;
  BlockStart blockStart(std::size_t block) const;
  /// Also ensures that blocks share no bytes, so a pass over all of them reads each byte once.
  bool hasBlocksInOrder() const;
  std::string_view between(Section section, std::size_t begin, std::size_t end) const;
  std::string_view bytesOf(Section section) const {
    return _sections[static_cast<std::size_t>(section)];
  }

  Sections _sections;
  std::uint32_t _articles = 0;
  std::uint32_t _terms = 0;
  std::uint32_t _dimensions = 0;
  std::uint32_t _excluded = 0;
  double _shareOfVariance = 0;
  std::string_view _language;
  std::vector<float> _inverseNorms;
};

template <typename Visit>
void SemanticIndexReader::forEachPosting(const IndexedTerm& term, Visit visit) const {
  const std::string_view counts = bytesOf(Section::counts);
  ByteReader reader(term.postings);
  std::uint64_t article = 0;
  for (std::uint64_t i = 0; i < term.articles; ++i, ++article) {
    const std::uint64_t skipped = reader.varint();
    if (!reader.ok() || skipped >= _articles - article) return;
    article += skipped;
    const std::uint64_t posting = term.firstPosting + i;
    if (posting / 2 >= counts.size()) return;
    const auto pair = static_cast<unsigned char>(counts[posting / 2]);
    const unsigned code = posting % 2 == 0 ? pair & 0xFU : pair >> 4U;
    if (!visit(static_cast<std::uint32_t>(article), code)) return;
    if (article + 1 >= _articles) return;
  }
}

}  // namespace quorvex::docuvault
