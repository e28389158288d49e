#include "fulltext/format/name_table.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <utility>

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "common/unicode.h"
#include "fulltext/format/index_format.h"
#include "text/identifiers.h"

namespace quorvex {

namespace {

constexpr unsigned kindBits = 2;

/// The places of one name of one kind.
struct Group {
  std::string folded;  ///< last part
  std::span<const DefinedName> names;
};

/// `names`: sorted.
std::vector<Group> groupsOf(std::span<const DefinedName> names) {
  std::vector<Group> groups;
  while (!names.empty()) {
    const DefinedName& first = names.front();
    const auto end = std::ranges::find_if(names, [&](const DefinedName& name) {
      return name.kind != first.kind || name.name != first.name;
    });
    const auto size = static_cast<std::size_t>(end - names.begin());
    groups.push_back({caseFolded(first.name.substr(qualifierSize(first.name))), names.first(size)});
    names = names.subspan(size);
  }
  return groups;
}

}  // namespace

NameTable::NameTable(const LazyBytes& section) {
  LazyReader reader(section);
  const std::uint64_t size = reader.varint();
  const std::uint64_t lastParts = reader.varint();
  const std::uint64_t qualifiers = reader.varint();
  const std::uint64_t places = reader.varint();
  _lastParts = reader.bytes(lastParts);
  _qualifiers = reader.bytes(qualifiers);
  _places = reader.bytes(places);
  if (!reader.ok() || size > UINT32_MAX) return;
  _blocks = BlockTable(reader.rest(), size, namesPerBlock);
  _size = _blocks.blockCount() == 0 ? 0 : static_cast<std::uint32_t>(size);
}

bool NameTable::Cursor::startBlock(std::uint64_t number) {
  const std::uint64_t blocks = _table._blocks.blockCount();
  if (number >= blocks) return false;
  _nextBlock = number + 1;
  _left = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(namesPerBlock, _table._size - number * namesPerBlock));
  _last.clear();
  _numbers = ByteReader(_table._blocks.block(number));
  // A block's part of a stream ends where that of the next block begins.
  ByteReader next(_table._blocks.block(number + 1));
  const std::array<std::pair<const LazyBytes*, ByteReader*>, 3> streams = {
      {{&_table._lastParts, &_lastParts},
       {&_table._qualifiers, &_qualifiers},
       {&_table._places, &_places}}};
  for (const auto& [stream, reader] : streams) {
    const std::uint64_t begin = _numbers.varint();
    const std::uint64_t end = number + 1 < blocks ? next.varint() : stream->size();
    if (begin > end || end > stream->size()) return fail();
    *reader = ByteReader(stream->part(begin, end - begin));
  }
  return true;
}

bool NameTable::Cursor::fail() {
  _left = 0;
  return false;
}

bool NameTable::Cursor::read() {
  const std::uint64_t shared = _numbers.varint();
  const std::string_view suffix = _lastParts.bytes(_numbers.varint());
  const std::string_view qualifier = _qualifiers.bytes(_numbers.varint());
  const std::uint64_t head = _numbers.varint();
  const std::uint64_t count = head >> kindBits;
  // A place takes at least two bytes.
  if (!_numbers.ok() || !_lastParts.ok() || !_qualifiers.ok() ||
      shared > std::min(_last.size(), largestSharedPrefix) || count > _places.rest().size() / 2) {
    return fail();
  }
  _last.resize(shared);
  _last += suffix;
  _entry.name.assign(qualifier).append(_last);
  _entry.lastPart = qualifier.size();
  _entry.kind = static_cast<std::uint8_t>(head & ((1U << kindBits) - 1));
  _entry.places.clear();
  std::uint64_t document = 0;
  for (std::uint64_t left = count; left > 0; --left) {
    document += _places.varint32();
    const std::uint32_t place = _places.varint32();
    if (!_places.ok() || document > UINT32_MAX) return fail();
    _entry.places.push_back({static_cast<std::uint32_t>(document), place});
  }
  _folded.clear();
  --_left;
  return true;
}

bool NameTable::Cursor::next() {
  while (_left == 0) {
    if (!startBlock(_nextBlock)) return false;
  }
  return read();
}

bool NameTable::Cursor::moveTo(std::uint32_t number) {
  if (!startBlock(number / namesPerBlock)) return false;
  for (std::uint32_t before = number % namesPerBlock; before > 0; --before) {
    if (_left == 0 || !read()) return false;
  }
  return _left > 0 && read();
}

bool NameTable::Cursor::seek(std::string_view foldedLast) {
  // The last block whose first entry is less.
  std::uint64_t low = 0;
  std::uint64_t high = _table._blocks.blockCount();
  while (low < high) {
    const std::uint64_t middle = low + (high - low) / 2;
    const bool isLess = startBlock(middle) && read() && folded() < foldedLast;
    (isLess ? low : high) = isLess ? middle + 1 : middle;
  }
  _left = 0;
  _nextBlock = low == 0 ? 0 : low - 1;
  while (next()) {
    if (folded() >= foldedLast) return true;
  }
  return false;
}

std::string encodeNames(std::vector<DefinedName> names) {
  std::sort(names.begin(), names.end());
  std::vector<Group> groups = groupsOf(names);
  // Names in byte order stay so where their keys are the same.
  std::ranges::stable_sort(groups, {}, &Group::folded);

  BlockTableBuilder table;
  std::string lastParts;
  std::string qualifiers;
  std::string places;
  std::string_view previous;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    std::string& out = table.entries();
    if (i % namesPerBlock == 0) {
      table.startBlock();
      appendVarint(out, lastParts.size());
      appendVarint(out, qualifiers.size());
      appendVarint(out, places.size());
      previous = {};
    }
    const std::span<const DefinedName> same = groups[i].names;
    const std::string_view name = same.front().name;
    const std::size_t qualifier = qualifierSize(name);
    const std::string_view last = name.substr(qualifier);
    const std::size_t shared = std::min(sharedPrefixSize(previous, last), largestSharedPrefix);
    appendVarint(out, shared);
    appendVarint(out, last.size() - shared);
    appendVarint(out, qualifier);
    appendVarint(out, std::uint64_t{same.size()} << kindBits | same.front().kind);
    lastParts += last.substr(shared);
    qualifiers += name.substr(0, qualifier);
    previous = last;
    std::uint32_t document = 0;
    for (const DefinedName& one : same) {
      appendVarint(places, one.place.document - document);
      appendVarint(places, one.place.place);
      document = one.place.document;
    }
  }
  std::string section;
  appendVarint(section, groups.size());
  for (const std::string* column : {&lastParts, &qualifiers, &places})
    appendVarint(section, column->size());
  return section.append(lastParts).append(qualifiers).append(places) + table.take();
}

}  // namespace quorvex
