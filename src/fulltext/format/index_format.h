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
//   documents   = count:varint *length:u32 *codesEnd:u40 [*parent:varint]
//                 ; count of each: terms kept, where its occurrences end, distance back to the
//                 ; parent (0: none); without parents if all documents are on the top level
//   urls        = table of (shared:varint suffix:text)          ; shared: at most 255
//   properties  = keys:varint *key:text table of (0 | count+1:varint *(key:varint value:text))
//   table       = *offset:u64 *block              ; offsets from their end; 16 entries a block
//   terms       = dictionary                      ; see text/term_dictionary.h; no term has extras
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
//   operators   = size:varint dictionary size:varint postings frequencies  ; may be absent
//
// What follows from the sections above, so that no search has to pass over all of them:
//
//   codes       = *(step:varint terms:varint size:varint *(skipped:varint terms:varint))
//                 ; document counts, falling: the first one, then how much less; how many terms
//                 ; have it; bytes of the groups of the dictionary with such terms: groups skipped,
//                 ; how many of the terms are in the group
//   titles      = size:varint affixes size:varint dictionary size:varint title-postings
//                 *length:u32 table of *word:varint           ; see format/title_affix.h
//                 ; length: words and gaps of each title; word: 0 for a gap, or a term's number + 1
//   title-postings = *(document:varint count:varint)          ; per term; gaps as in postings
//   joined      = size:varint *(hash:u64 64*term:u32) *(size:varint filter)
//                 ; parts that more than 64 terms have, with the best of these: numbers of terms of
//                 ; texts, behind them of titles; then a Bloom filter of the keys and other parts
//                 ; for each group of the dictionary of texts, and of that of titles
//   place-names = table of (count:varint *(place:varint name:zigzag))
//                 ; per document, ascending: steps from the previous place and name to the next

namespace quorvex {

/// Version 1 lacked what follows from other sections, and had other documents and dictionaries; see
/// reading/first_version.h.
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
