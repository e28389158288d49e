#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/bytes.h"
#include "common/section_container.h"
#include "common/value.h"

// Format of a semantic index, in a container (common/section_container.h); see
// docs/formats/semantic-index.md.
//
//   info       = articles:u32 terms:u32 dimensions:u32 excluded:u32 postings:u64 variance:f64
//                language                ; the rest
//   attributes = properties              ; common/property_codec.h
//   excluded   = *skipped:varint         ; articles to leave out of answers, ascending
//   names      = *end:u32 *block of *(shared:varint subPath:text title:text)
//   details    = *end:u32 *block of *(description:text count:varint *keyword:text
//                                     count:varint *(name:text link:text))
//                ; 16 articles a block; end: of each block, from the end of these numbers; shared:
//                ; bytes of the sub-path before, at most 255
//   scales     = *rowScale:f32 *vectorLength:f32 *inverseEnergy:f32
//                ; per article the scale of its terms and the length of its vector in the reduced
//                ; space, per dimension 1 / energy
//   vectors    = *i8                     ; for each article and dimension, article by article
//   terms      = dictionary              ; text/term_dictionary.h; a term's byte: its global weight
//   postings   = *skipped:varint         ; per term: articles between two that have it
//   counts     = *u8                     ; a four-bit count code per posting, the low half first

namespace quorvex::docuvault {

inline constexpr std::string_view indexMagic = "QXRDXIDX";
/// Version 1 had another container, one section for all of an article's record, and terms in blocks
/// of 16; see format/first_version.h.
inline constexpr std::uint32_t indexVersion = 2;

/// Section kinds. The values are stored and never change.
enum class Section : std::uint32_t {
  info = 1,
  attributes = 2,
  excluded = 3,
  names = 4,
  details = 5,
  scales = 6,
  vectors = 7,
  terms = 8,
  postings = 9,
  counts = 10,
};
inline constexpr std::uint32_t sectionCount = 10;
inline constexpr ContainerFormat indexContainer = {indexMagic, indexVersion, sectionCount,
                                                   sectionCount};

/// The sections of an index that is being made.
class IndexSections {
 public:
  IndexSections() : _sections(sectionCount) {}
  /// All of them, in order.
  explicit IndexSections(std::vector<std::string> sections) : _sections(std::move(sections)) {}

  std::string& operator[](Section section) {
    return _sections[static_cast<std::uint32_t>(section) - 1];
  }
  /// Returns the bytes of the index; empties the sections.
  std::string assemble();

 private:
  std::vector<std::string> _sections;
};

/// Keeps the dot products of a query within 32 bits.
inline constexpr std::uint32_t mostDimensions = 256;

/// What the info section tells.
struct IndexInfo {
  std::uint32_t articles = 0;
  std::uint32_t terms = 0;
  std::uint32_t dimensions = 0;
  std::uint32_t excluded = 0;  ///< articles left out of answers
  std::uint64_t postings = 0;
  double shareOfVariance = 0;
  std::string language;  ///< locale identifier

  std::uint64_t scales() const { return std::uint64_t{articles} * 2 + dimensions; }
};
void appendInfo(std::string& out, const IndexInfo& info);
/// Null if a number is out of bounds.
std::optional<IndexInfo> readInfo(std::string_view section);

/// Reads a count of items of at least one byte each; 0 if fewer bytes are left.
std::uint64_t readCount(ByteReader& reader);
double readDouble(ByteReader& reader);
void appendFloat(std::string& out, float number);

}  // namespace quorvex::docuvault
