#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/section_container.h"

// Byte format of the full-text index. Numbers are little-endian; varint is LEB128, text is a varint
// size and that many bytes. docs/formats/full-text-index.md explains the design.
//
//   index       = header *entry tableSum *section
//   header      = "TextSift" version:u32 entries:u32 size:u64   ; size of the whole index
//   entry       = kind:u32 zero:u32 offset:u64 size:u64 sum:u64 ; location of a section
//   tableSum    = u64                                           ; checksum of all bytes before it
//
//   analysis    = hasName:u8 [name:text] properties             ; see common/property_codec.h
//   documents   = count:varint *parent:varint *length:varint *codes:varint
//                 ; count of each: distance back to the parent (0: none), terms kept, bytes of its
//                 ; occurrences
//   urls        = table of (shared:varint suffix:text)          ; shared: at most 255
//   properties  = keys:varint *key:text table of (0 | count+1:varint *(key:varint value:text))
//   table       = *offset:u64 *block              ; offsets from their end; 16 entries a block
//   terms       = count:u32 *offset:u64 *termBlock              ; 16 a block, in byte order
//   termBlock   = firstPosting:varint postingsOffset:varint numbers:varint
//                 *(shared:varint suffixSize:varint documents:varint extra:varint) *suffix
//                 ; numbers: bytes of the parenthesis; the term's postings take documents + extra
//   postings    = *(document:varint *gap:varint)                ; per term; gap - 1
//   frequencies = *u8                                           ; per posting, at most 255
//   occurrences = *code                                         ; per document in text order
//   code        = 00..9F | A0..F7 u8 | F8..FE u16(big-endian) | FF varint
//                 ; 0: one or more words left out; n: the n-th term by falling document count
//   places      = fragments:varint headings:varint fragment-bytes heading-bytes table of place-list
//                 ; sizes of the two; the section may be absent
//   place-list  = count:varint *place             ; at the head of a block: where its fragments and
//                 ; its headings begin
//   place       = gap:varint head:u8 [shared:varint suffixSize:varint] [headingSize:varint]
//                 ; gap: codes since the previous place; head: 0F level, 10 fragment, 20 heading,
//                 ; 40 the heading is the place's only name; a zero byte in a fragment stands
//                 ; for that name
//   names       = count:varint *size:varint last-bytes qualifier-bytes defined table of name
//                 ; sizes of the three; by last part; may be absent
//   name        = shared:varint suffixSize:varint qualifierSize:varint head:varint
//                 ; head: kind + 4 * places; at the head of a block: where its part of each of the
//                 ; three begins
//   defined     = *(gap:varint place:varint)      ; per name; gap: documents since the previous one
//   traits      = language:text *linkShare:u8 *codeShare:u8 *sketch:u64    ; may be absent
//   operators   = size:varint terms size:varint postings frequencies       ; may be absent

namespace quorvex {

/// Version 1 had no title index, keys, codes and names of documents, and other sections 2 and 5;
/// see reading/first_version.h.
inline constexpr std::string_view indexMagic = "TextSift";
inline constexpr std::uint32_t indexVersion = 2;

/// Section kinds. The values are stored and never change.
enum class IndexSection : std::uint32_t {
  analysis = 1,
  documents = 2,
  urls = 3,
  properties = 4,
  terms = 5,
  postings = 6,
  frequencies = 7,
  occurrences = 8,
  places = 9,
  names = 10,
  traits = 11,
  operators = 12,
  codes = 13,
  titles = 14,
  joinedTerms = 15,
  placeNames = 16,
};
inline constexpr std::size_t indexSectionCount = 16;
/// The others may be absent.
inline constexpr std::size_t requiredSectionCount = 8;
inline constexpr ContainerFormat indexContainer = {indexMagic, indexVersion, indexSectionCount,
                                                   requiredSectionCount};

inline constexpr std::uint32_t documentsPerBlock = 16;
inline constexpr std::uint32_t namesPerBlock = 64;
/// A document has at most so many places, so that a small file cannot claim many with long shared
/// fragments.
inline constexpr std::size_t placesPerDocument = 65'536;
inline constexpr std::uint32_t largestFrequency = 255;
/// A URL shares at most this many bytes with the previous one, so a small file cannot contain many
/// long URLs.
inline constexpr std::size_t largestSharedPrefix = 255;

/// Returns the terms by falling document count, ties by id. Occurrence codes are assigned in this
/// order, so the codes need not be stored.
std::vector<std::uint32_t> termsByDocumentCount(const std::vector<std::uint32_t>& documentCounts,
                                                std::uint32_t largestCount);

/// Codes below this take one byte.
inline constexpr std::uint32_t firstLongCode = 0xA0;

/// Occurrence codes: one byte for the most common terms. Reading past the end returns 0.
void appendCode(std::string& out, std::uint32_t code);
std::uint32_t readCode(const char*& position, const char* end);

}  // namespace quorvex
