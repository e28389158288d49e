#include "fulltext/format/document_table.h"

#include <numeric>

#include "common/bytes.h"
#include "common/nesting.h"

namespace quorvex {

DocumentTable::DocumentTable(std::string_view section, std::uint64_t occurrencesSize) {
  if (decode(section, occurrencesSize)) {
    linkSiblings();
  } else {
    *this = DocumentTable();
  }
}

bool DocumentTable::decode(std::string_view section, std::uint64_t occurrencesSize) {
  ByteReader reader(section);
  const std::uint64_t count = reader.varint();
  // Each document takes at least a byte in each of the three columns.
  if (count > reader.rest().size() / 3 || count >= none) return false;
  _parents.reserve(count);
  std::vector<std::uint8_t> levels;
  levels.reserve(count);
  for (std::uint32_t id = 0; id < count; ++id) {
    const std::uint64_t distance = reader.varint();
    if (distance > id) return false;
    const unsigned level = distance == 0 ? 1 : levels[id - distance] + 1U;
    if (level > maximumNesting) return false;
    levels.push_back(static_cast<std::uint8_t>(level));
    _parents.push_back(distance == 0 ? none : id - static_cast<std::uint32_t>(distance));
  }
  _lengths.reserve(count);
  for (std::uint32_t id = 0; id < count; ++id)
    _lengths.push_back(reader.varint32());
  _codeOffsets.reserve(count + 1);
  _codeOffsets.push_back(0);
  for (std::uint32_t id = 0; id < count; ++id) {
    const std::uint64_t size = reader.varint();
    if (size > occurrencesSize - _codeOffsets.back()) return false;
    _codeOffsets.push_back(_codeOffsets.back() + size);
  }
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
  if (_firstChildren.empty()) return none;
  return _firstChildren[document == none ? size() : document];
}

double DocumentTable::averageLength() const {
  if (_lengths.empty()) return 0;
  return static_cast<double>(std::accumulate(_lengths.begin(), _lengths.end(), std::uint64_t{0})) /
         static_cast<double>(_lengths.size());
}

}  // namespace quorvex
