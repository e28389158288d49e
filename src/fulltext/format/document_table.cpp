#include "fulltext/format/document_table.h"

#include <algorithm>
#include <numeric>

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "common/nesting.h"

namespace quorvex {

namespace {

constexpr std::size_t lengthSize = 4;
/// Bytes of the position where a document's occurrences end.
constexpr unsigned endSize = 5;

}  // namespace

DocumentTable::DocumentTable(const LazyBytes& section) {
  if (!decode(section)) *this = DocumentTable();
}

bool DocumentTable::decode(const LazyBytes& section) {
  LazyReader reader(section);
  const std::uint64_t count = reader.varint();
  if (count > reader.rest().size() / (lengthSize + endSize) || count >= none) return false;
  const LazyBytes lengths = reader.bytes(count * lengthSize);
  _codeEnds = reader.bytes(count * endSize);
  if (!reader.ok()) return false;
  // Ranking asks for the length of each document that it scores.
  _lengths.resize(count);
  ByteReader length(lengths.all());
  for (std::uint32_t& each : _lengths)
    each = length.u32();
  return length.ok() && endsAscend() && decodeParents(reader.rest());
}

/// No two documents share occurrences, so that a pass over all of them reads each byte once.
bool DocumentTable::endsAscend() const {
  std::uint64_t previous = 0;
  for (ByteReader ends(_codeEnds.all()); !ends.rest().empty();) {
    const std::uint64_t end = ends.fixed(endSize);
    if (end < previous) return false;
    previous = end;
  }
  return true;
}

bool DocumentTable::decodeParents(const LazyBytes& column) {
  if (column.empty()) return true;
  ByteReader reader(column.all());
  _parents.reserve(size());
  std::vector<std::uint8_t> levels;
  levels.reserve(size());
  for (std::uint32_t id = 0; id < size(); ++id) {
    const std::uint64_t distance = reader.varint();
    if (distance > id) return false;
    const unsigned level = distance == 0 ? 1 : levels[id - distance] + 1U;
    if (level > maximumNesting) return false;
    levels.push_back(static_cast<std::uint8_t>(level));
    _parents.push_back(distance == 0 ? none : id - static_cast<std::uint32_t>(distance));
  }
  linkSiblings();
  return reader.ok();
}

void DocumentTable::linkSiblings() {
  _firstChildren.assign(std::size_t{size()} + 1, none);
  _nextSiblings.assign(size(), none);
  for (std::uint32_t id = size(); id-- > 0;) {
    std::uint32_t& first = _firstChildren[_parents[id] == none ? size() : _parents[id]];
    _nextSiblings[id] = first;
    first = id;
  }
}

std::uint32_t DocumentTable::firstChild(std::uint32_t document) const {
  if (_parents.empty()) return document == none && size() > 0 ? 0 : none;
  return _firstChildren[document == none ? size() : document];
}

std::uint32_t DocumentTable::nextSibling(std::uint32_t document) const {
  if (_parents.empty()) return document + 1 < size() ? document + 1 : none;
  return _nextSiblings[document];
}

std::uint64_t DocumentTable::codesBegin(std::uint32_t document) const {
  return document == 0 ? 0 : codesEnd(document - 1);
}

std::uint64_t DocumentTable::codesEnd(std::uint32_t document) const {
  return ByteReader(_codeEnds.part(std::size_t{document} * endSize, endSize)).fixed(endSize);
}

double DocumentTable::averageLength() const {
  if (_lengths.empty()) return 0;
  return static_cast<double>(std::accumulate(_lengths.begin(), _lengths.end(), std::uint64_t{0})) /
         static_cast<double>(_lengths.size());
}

std::string encodeDocuments(const std::vector<StoredDocument>& documents) {
  std::string out;
  appendVarint(out, documents.size());
  for (const StoredDocument& document : documents)
    appendFixed(out, document.length, lengthSize);
  std::uint64_t end = 0;
  for (const StoredDocument& document : documents)
    appendFixed(out, end += document.codesSize, endSize);
  const auto isTopLevel = [](const StoredDocument& document) {
    return document.parentDistance == 0;
  };
  if (std::ranges::all_of(documents, isTopLevel)) return out;
  for (const StoredDocument& document : documents)
    appendVarint(out, document.parentDistance);
  return out;
}

}  // namespace quorvex
