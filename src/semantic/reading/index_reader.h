#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/lazy_bytes.h"
#include "common/once.h"
#include "semantic/format/article_table.h"
#include "semantic/format/index_format.h"
#include "text/term_dictionary.h"

namespace quorvex::docuvault {

/// A term of the index and its postings. Valid within one operation.
struct IndexedTerm {
  float globalWeight = 0;
  std::uint32_t articles = 0;
  std::string_view postings;
  std::string_view counts;  ///< from the byte that has the first one
  bool startsInHighHalf = false;
};

/// An article's place in the reduced space. Valid within one visit.
struct ArticleVector {
  const std::int8_t* direction;  ///< `dimensions` numbers, not normalised
  float length;
};

/// Reads an index in place, each part when it is asked for; the bytes must outlive it. Thread-safe.
/// Bytes that pass open() may still be inconsistent: reads then return less, but never go out of
/// bounds.
class SemanticIndexReader {
 public:
  /// Checks the counts against the sizes of the sections; null if the bytes are no index.
  static std::shared_ptr<const SemanticIndexReader> open(const LazyBytes& bytes);

  const IndexInfo& info() const { return _info; }
  std::uint32_t articles() const { return _info.articles; }
  std::uint32_t dimensions() const { return _info.dimensions; }
  const ArticleTable& articleTable() const;
  LazyBytes section(Section kind) const;

  /// Visits each article with the scale of its terms.
  template <typename Visit>
  void forEachRowScale(Visit visit) const;
  /// Visits each article with its vector; reads as much at a time as is unpacked at once.
  template <typename Visit>
  void forEachVector(Visit visit) const;
  template <typename Visit>
  void visitVector(std::uint32_t article, Visit visit) const {
    visitVectors(article, 1, visit);
  }
  float inverseEnergy(std::uint32_t dimension) const;

  std::optional<IndexedTerm> find(std::string_view term) const;
  void forEachTerm(const std::function<void(const IndexedTerm&)>& visit) const;
  /// Visits the article and count code of each posting, in ascending order, while `visit` is true.
  template <typename Visit>
  void forEachPosting(const IndexedTerm& term, Visit visit) const;

 private:
  SemanticIndexReader(SectionContainer sections, IndexInfo info);

  bool hasFittingSizes() const;
  const TermDictionary& terms() const;
  static IndexedTerm indexedTerm(const TermEntry& entry, const LazyBytes& postings,
                                 const LazyBytes& counts);
  /// One of the floats in a part of the scales. A damaged one counts as 0.
  static float scaleAt(std::string_view part, std::size_t index);
  template <typename Visit>
  void visitVectors(std::uint32_t first, std::uint32_t count, Visit visit) const;

  /// Bytes that are asked for at a time: of a frame that is unpacked.
  static constexpr std::uint32_t bytesAtOnce = 64 * 1024;

  SectionContainer _sections;
  IndexInfo _info;
  mutable Once _articlesOnce;
  mutable ArticleTable _articles;
  mutable Once _termsOnce;
  mutable TermDictionary _terms;
};

template <typename Visit>
void SemanticIndexReader::forEachRowScale(Visit visit) const {
  constexpr std::uint32_t scalesAtOnce = bytesAtOnce / 4;
  const LazyBytes scales = section(Section::scales);
  for (std::uint32_t first = 0; first < _info.articles; first += scalesAtOnce) {
    const std::uint32_t count = std::min(scalesAtOnce, _info.articles - first);
    const std::string_view part = scales.part(std::size_t{first} * 4, std::size_t{count} * 4);
    for (std::uint32_t i = 0; i < count; ++i)
      visit(first + i, scaleAt(part, i));
  }
}

template <typename Visit>
void SemanticIndexReader::forEachVector(Visit visit) const {
  const std::uint32_t vectorsAtOnce = bytesAtOnce / std::max(_info.dimensions, 4U);
  for (std::uint32_t first = 0; first < _info.articles; first += vectorsAtOnce) {
    visitVectors(first, std::min(vectorsAtOnce, _info.articles - first), visit);
  }
}

template <typename Visit>
void SemanticIndexReader::visitVectors(std::uint32_t first, std::uint32_t count,
                                       Visit visit) const {
  /// Stands for vectors that are damaged.
  static constexpr std::array<std::int8_t, mostDimensions> zero{};
  const std::size_t dimensions = _info.dimensions;
  const std::string_view vectors =
      section(Section::vectors).part(first * dimensions, count * dimensions);
  const std::string_view lengths =
      section(Section::scales).part((std::size_t{_info.articles} + first) * 4, count * 4ULL);
  const bool isSound = vectors.size() == count * dimensions;
  const auto* numbers = reinterpret_cast<const std::int8_t*>(vectors.data());
  for (std::uint32_t i = 0; i < count; ++i) {
    visit(first + i, ArticleVector{.direction = isSound ? numbers + i * dimensions : zero.data(),
                                   .length = scaleAt(lengths, i)});
  }
}

template <typename Visit>
void SemanticIndexReader::forEachPosting(const IndexedTerm& term, Visit visit) const {
  ByteReader reader(term.postings);
  std::uint64_t article = 0;
  std::uint64_t half = term.startsInHighHalf ? 1 : 0;
  for (std::uint32_t left = term.articles; left > 0; --left, ++article, ++half) {
    const std::uint64_t skipped = reader.varint();
    if (!reader.ok() || article >= _info.articles || skipped >= _info.articles - article) return;
    article += skipped;
    if (half / 2 >= term.counts.size()) return;
    const auto pair = static_cast<unsigned char>(term.counts[half / 2]);
    const unsigned code = half % 2 == 0 ? pair & 0xFU : unsigned{pair} >> 4U;
    if (!visit(static_cast<std::uint32_t>(article), code)) return;
  }
}

}  // namespace quorvex::docuvault
