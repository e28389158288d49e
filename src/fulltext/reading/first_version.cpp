#include "fulltext/reading/first_version.h"

#include <algorithm>
#include <array>

#include "common/bytes.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/derived_sections.h"
#include "fulltext/format/document_table.h"
#include "fulltext/format/index_format.h"
#include "text/term_dictionary.h"

// What differs in version 1:
//
//   documents = count:varint *parent:varint *length:varint *codes:varint
//               ; count of each: distance back to the parent (0: none), terms, bytes of occurrences
//   terms     = count:u32 *offset:u64 *termBlock             ; 16 a block; offsets from their end
//   termBlock = firstPosting:varint postingsOffset:varint numbers:varint
//               *(shared:varint suffixSize:varint documents:varint extra:varint) *suffix
//   operators = size:varint terms size:varint postings frequencies

namespace quorvex {

namespace {

constexpr std::uint32_t sectionKinds = 12;
constexpr ContainerFormat firstFormat = {indexMagic, 1, sectionKinds, requiredSectionCount};
constexpr std::uint32_t termsPerBlock = 16;
/// The terms of an index are expected to be shorter than all of it, or than this: what is made of
/// them takes many times their size, and front coding lets a small file claim many.
constexpr std::uint64_t fewTermBytes = std::uint64_t{1} << 20U;

/// Null when the section is damaged.
std::optional<std::string> upgradedDocuments(std::string_view section) {
  ByteReader reader(section);
  const std::uint64_t count = reader.varint();
  // Each document takes at least a byte in each of the three columns.
  if (count > reader.rest().size() / 3) return std::nullopt;
  std::vector<StoredDocument> documents(count);
  for (StoredDocument& document : documents)
    document.parentDistance = reader.varint32();
  for (StoredDocument& document : documents)
    document.length = reader.varint32();
  for (StoredDocument& document : documents)
    document.codesSize = reader.varint();
  return reader.ok() ? std::optional(encodeDocuments(documents)) : std::nullopt;
}

/// Copies the terms of a block. Returns false where the damage begins, which ends the dictionary.
bool copyBlock(std::string_view block, std::uint64_t terms, std::uint64_t& posting,
               std::uint64_t& offset, std::uint64_t& mostBytes, TermDictionaryBuilder& builder) {
  ByteReader reader(block);
  // Posting lists follow each other in the order of the terms.
  if (reader.varint() != posting || reader.varint() != offset) return false;
  ByteReader numbers(reader.text());
  std::string_view suffixes = reader.rest();
  std::string term;
  for (; terms > 0; --terms) {
    const std::uint64_t shared = numbers.varint();
    const std::uint64_t suffix = numbers.varint();
    const std::uint32_t documents = numbers.varint32();
    const std::uint64_t size = documents + numbers.varint();
    if (!numbers.ok() || shared > term.size() || suffix > suffixes.size() ||
        suffix > maximumTermSize - shared || size > 5 * std::uint64_t{documents}) {
      return false;
    }
    term.resize(shared);
    term += suffixes.substr(0, suffix);
    suffixes.remove_prefix(suffix);
    if (term.size() > mostBytes) return false;
    mostBytes -= term.size();
    builder.add(term, documents, size);
    posting += documents;
    offset += size;
  }
  return true;
}

std::string upgradedTerms(std::string_view section, std::uint64_t mostBytes) {
  TermDictionaryBuilder builder(false);
  ByteReader reader(section);
  const std::uint64_t count = reader.u32();
  const BlockTable blocks(reader.rest(), count, termsPerBlock);
  std::uint64_t posting = 0;
  std::uint64_t offset = 0;
  for (std::uint64_t block = 0; block < blocks.blockCount(); ++block) {
    const std::uint64_t terms = std::min<std::uint64_t>(termsPerBlock, count - 16 * block);
    if (!copyBlock(blocks.block(block), terms, posting, offset, mostBytes, builder)) break;
  }
  return builder.take();
}

std::string upgradedOperators(std::string_view section, std::uint64_t mostBytes) {
  ByteReader reader(section);
  const std::string_view terms = reader.text();
  std::string upgraded;
  if (reader.ok() && !section.empty()) appendText(upgraded, upgradedTerms(terms, mostBytes));
  return upgraded.append(reader.rest());
}

}  // namespace

std::optional<Data> upgradeFirstVersion(const Data& index) {
  const std::optional<SectionContainer> first =
      SectionContainer::open(index.lazyBytes(), firstFormat);
  if (!first) return std::nullopt;
  const auto bytesOf = [&](IndexSection kind) {
    return first->section(static_cast<std::uint32_t>(kind)).all();
  };
  std::vector<std::string> sections(indexSectionCount);
  for (std::uint32_t kind = 1; kind <= sectionKinds; ++kind)
    sections[kind - 1] = first->section(kind).all();
  const auto section = [&](IndexSection kind) -> std::string& {
    return sections[static_cast<std::size_t>(kind) - 1];
  };
  section(IndexSection::documents) =
      upgradedDocuments(bytesOf(IndexSection::documents)).value_or(encodeDocuments({}));
  const std::uint64_t mostBytes = std::max<std::uint64_t>(fewTermBytes, index.size());
  section(IndexSection::terms) = upgradedTerms(bytesOf(IndexSection::terms), mostBytes);
  section(IndexSection::operators) = upgradedOperators(bytesOf(IndexSection::operators), mostBytes);
  addDerivedSections(sections);
  std::string upgraded;
  assembleContainer(indexContainer, sections, upgraded);
  return Data(std::move(upgraded));
}

}  // namespace quorvex
