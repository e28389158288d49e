#include "fulltext/format/term_dictionary.h"

#include <algorithm>

#include "common/bytes.h"
#include "fulltext/format/index_format.h"

namespace quorvex {

namespace {

/// Appends the posting list of one term; returns its size in bytes.
std::size_t encodePostings(const std::uint32_t* documents, std::uint32_t count, std::string& out) {
  const std::size_t begin = out.size();
  std::uint32_t expected = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    appendVarint(out, documents[i] - expected);
    expected = documents[i] + 1;
  }
  return out.size() - begin;
}

}  // namespace

std::string encodeTerms(const std::vector<std::string_view>& terms,
                        const std::vector<std::uint32_t>& documentCounts,
                        const std::vector<std::uint32_t>& postingDocuments, std::string& postings) {
  BlockTableBuilder table;
  std::string& blocks = table.entries();
  std::string numbers;
  std::string suffixes;
  std::uint64_t posting = 0;
  for (std::size_t first = 0; first < terms.size(); first += termsPerBlock) {
    table.startBlock();
    appendVarint(blocks, posting);
    appendVarint(blocks, postings.size());
    numbers.clear();
    suffixes.clear();
    std::string_view previous;
    for (std::size_t i = first; i < std::min(first + termsPerBlock, terms.size()); ++i) {
      const std::size_t shared = sharedPrefixSize(previous, terms[i]);
      const std::size_t size =
          encodePostings(postingDocuments.data() + posting, documentCounts[i], postings);
      appendVarint(numbers, shared);
      appendVarint(numbers, terms[i].size() - shared);
      appendVarint(numbers, documentCounts[i]);
      appendVarint(numbers, size - documentCounts[i]);
      suffixes += terms[i].substr(shared);
      previous = terms[i];
      posting += documentCounts[i];
    }
    appendText(blocks, numbers);
    blocks += suffixes;
  }
  std::string section;
  appendU32(section, static_cast<std::uint32_t>(terms.size()));
  return section + table.take();
}

TermDictionary::TermDictionary(std::string_view section) {
  ByteReader reader(section);
  const std::uint32_t count = reader.u32();
  _blocks = BlockTable(reader.rest(), count, termsPerBlock);
  if (_blocks.blockCount() > 0) _count = count;
}

// cppcheck-suppress uninitMemberVar ; the bytes of a term are written before they are read
TermDictionary::Cursor::Cursor(const TermDictionary& dictionary, std::uint32_t id)
    : _dictionary(&dictionary), _next(id - id % termsPerBlock) {}

bool TermDictionary::Cursor::startBlock() {
  ByteReader reader(_dictionary->_blocks.block(_next / termsPerBlock));
  _entry = {};
  _entry.firstPosting = reader.varint();
  _entry.postingsOffset = reader.varint();
  _numbers = reader.text();
  _suffixes = reader.rest();
  _termSize = 0;
  return reader.ok();
}

bool TermDictionary::Cursor::next() {
  if (_next >= _dictionary->size()) return false;
  if (_next % termsPerBlock == 0 && !startBlock()) return false;
  ByteReader numbers(_numbers);
  const std::uint64_t shared = numbers.varint();
  const std::uint64_t suffixSize = numbers.varint();
  const std::uint32_t documentCount = numbers.varint32();
  const std::uint64_t extra = numbers.varint();
  if (!numbers.ok() || shared > _termSize || suffixSize > _suffixes.size() ||
      suffixSize > maximumTermSize - shared || extra > 4 * std::uint64_t{documentCount}) {
    _next = _dictionary->size();
    return false;
  }
  _numbers = numbers.rest();
  std::ranges::copy(_suffixes.substr(0, suffixSize), _term.begin() + shared);
  _termSize = shared + suffixSize;
  _suffixes.remove_prefix(suffixSize);
  _entry.firstPosting += _entry.documentCount;
  _entry.postingsOffset += _entry.postingsSize;
  _entry.documentCount = documentCount;
  _entry.postingsSize = documentCount + extra;
  _entry.id = _next++;
  return true;
}

bool TermDictionary::Cursor::seek(std::string_view term) {
  std::uint32_t low = 0;  // earlier blocks start with a term not greater than `term`
  auto high = static_cast<std::uint32_t>(_dictionary->_blocks.blockCount());
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    _next = middle * termsPerBlock;
    if (next() && this->term() <= term) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  _next = (low == 0 ? 0 : low - 1) * termsPerBlock;
  while (next()) {
    if (this->term() >= term) return true;
  }
  return false;
}

std::optional<std::string> TermDictionary::term(std::uint32_t id) const {
  if (id >= _count) return std::nullopt;
  Cursor cursor(*this, id);
  while (cursor.next()) {
    if (cursor.id() == id) return std::string(cursor.term());
  }
  return std::nullopt;
}

std::optional<TermEntry> TermDictionary::find(std::string_view term) const {
  Cursor cursor(*this, 0);
  return cursor.seek(term) && cursor.term() == term ? std::optional(cursor.entry()) : std::nullopt;
}

}  // namespace quorvex
