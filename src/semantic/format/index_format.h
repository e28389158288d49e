#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/bytes.h"
#include "common/value.h"

// Format of a semantic index, little-endian; see docs/formats/semantic-index.md.
//
//   index      = magic "QXRDXIDX", u32 version, u32 sections, u64 size, u64 checksum,
//                { u64 offset, u64 length } of each section in the order of `Section`,
//                then the sections, each padded with zeros to a multiple of 8
//   checksum   = XXH64 with seed 0 of all bytes after it
//   info       = u32 articles, u32 terms, u32 dimensions, u32 excluded articles, u64 postings,
//                f64 share of variance, language (the rest)
//   attributes = varint count, { string key, u8 kind, value }: 0 boolean as u8, 1 integer as u64,
//                2 real as f64, 3 string, 4 data; in byte order of the keys
//   articles   = u32 end of each record; the records: u8 flags (1: excluded from search), string
//                sub-path, title, description, varint count { string keyword },
//                varint count { string name, string link } of the actions
//   scales     = f32 row scale of each article's terms, f32 length of its vector in the reduced
//                space, f32 1 / energy of each dimension
//   vectors    = i8 for each article and dimension, article by article
//   termBlocks = { u32 offset in terms, u32 offset in postings, u32 postings before } of every 16th
//                term
//   terms      = in byte order { varint bytes shared with the previous term (0 at a block's start),
//                string rest, u8 global weight, varint articles, varint bytes of postings }
//   postings   = by term, varint article number less the previous one (at first -1), minus 1
//   counts     = a four-bit count code for each posting, the low half first
//   string     = varint length, bytes
//   varint     = 7 bits a byte, the low ones first, the high bit set on all but the last

namespace quorvex::docuvault {

inline constexpr std::string_view indexMagic = "QXRDXIDX";
/// 1: first version.
inline constexpr std::uint32_t indexVersion = 1;

/// Stored by position, so never reorder them.
enum class Section : std::size_t {
  info,
  attributes,
  articles,
  scales,
  vectors,
  termBlocks,
  terms,
  postings,
  counts,
};
inline constexpr std::size_t sectionCount = 9;
using Sections = std::array<std::string_view, sectionCount>;

inline constexpr std::size_t infoSize = 32;
inline constexpr std::size_t termBlockSize = 16;
inline constexpr std::size_t termBlockBytes = 12;
/// Keeps the dot products of a query within 32 bits.
inline constexpr std::uint32_t mostDimensions = 256;

/// Returns the bytes of an index with these sections.
std::string joinSections(const Sections& sections);

/// Returns views of the sections; none if magic, version, sizes or checksum are wrong.
std::optional<Sections> splitSections(std::string_view bytes);

double readDouble(ByteReader& reader);
/// Reads a count of items of at least one byte each; 0 if fewer bytes are left.
std::uint64_t readCount(ByteReader& reader);
void appendFloat(std::string& out, float number);
void appendDouble(std::string& out, double number);

/// Encodes attributes of the format's kinds; omits others.
std::string encodeAttributes(const Dictionary& attributes);
std::optional<Dictionary> decodeAttributes(std::string_view bytes);

}  // namespace quorvex::docuvault
