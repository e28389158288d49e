#include "fulltext/format/place_table.h"

#include <algorithm>

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "fulltext/format/index_format.h"

namespace quorvex {

namespace {

// The head of a place.
constexpr std::uint8_t levelBits = 0x0F;
constexpr std::uint8_t hasFragment = 0x10;
constexpr std::uint8_t hasHeading = 0x20;
constexpr std::uint8_t headingIsName = 0x40;

/// The numbers of a place.
struct StoredPlace {
  std::uint64_t gap = 0;
  std::uint8_t head = 0;
  std::uint64_t shared = 0;
  std::uint64_t suffix = 0;
  std::uint64_t heading = 0;
};

StoredPlace readPlace(ByteReader& reader) {
  StoredPlace place;
  place.gap = reader.varint();
  place.head = reader.byte();
  if ((place.head & hasFragment) != 0) {
    place.shared = reader.varint();
    place.suffix = reader.varint();
  }
  if ((place.head & hasHeading) != 0) place.heading = reader.varint();
  return place;
}

/// Joins the numbers of a document's places with their texts.
class Decoder {
 public:
  Decoder(const ByteReader& fragments, const ByteReader& headings)
      : _fragments(fragments), _headings(headings) {}

  void skip(const StoredPlace& stored) {
    _fragments.bytes(stored.suffix);
    _headings.bytes(stored.heading);
  }

  bool add(const StoredPlace& stored) {
    std::vector<char>& fragments = _result.fragments;
    const std::size_t begin = fragments.size();
    const std::string_view suffix = _fragments.bytes(stored.suffix);
    _position += stored.gap;
    if (!_fragments.ok() || stored.gap > UINT32_MAX || _position > UINT32_MAX ||
        stored.shared > std::min(begin - _previous, largestSharedPrefix)) {
      return false;
    }
    if ((stored.head & hasFragment) != 0) {
      fragments.resize(begin + stored.shared);
      std::copy_n(fragments.begin() + static_cast<std::ptrdiff_t>(_previous), stored.shared,
                  fragments.begin() + static_cast<std::ptrdiff_t>(begin));
      fragments.insert(fragments.end(), suffix.begin(), suffix.end());
      _previous = begin;
    }
    _ends.push_back(fragments.size());
    _result.places.push_back({.position = static_cast<std::uint32_t>(_position),
                              .level = static_cast<std::uint8_t>(stored.head & levelBits),
                              .headingIsName = (stored.head & headingIsName) != 0,
                              .fragment = {},
                              .heading = _headings.bytes(stored.heading)});
    return _headings.ok();
  }

  DocumentPlaces take() {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < _ends.size(); begin = _ends[i++])
      _result.places[i].fragment = {_result.fragments.data() + begin, _ends[i] - begin};
    return std::move(_result);
  }

 private:
  ByteReader _fragments;
  ByteReader _headings;
  std::uint64_t _position = 0;
  std::size_t _previous = 0;  ///< begin of the previous fragment
  std::vector<std::size_t> _ends;
  DocumentPlaces _result;
};

}  // namespace

PlaceTable::PlaceTable(const LazyBytes& section, std::uint32_t documentCount) {
  LazyReader reader(section);
  const std::uint64_t fragments = reader.varint();
  const std::uint64_t headings = reader.varint();
  _fragments = reader.bytes(fragments);
  _headings = reader.bytes(headings);
  if (reader.ok()) _blocks = BlockTable(reader.rest(), documentCount, documentsPerBlock);
}

DocumentPlaces PlaceTable::places(std::uint32_t document) const {
  const std::uint32_t block = document / documentsPerBlock;
  ByteReader reader(_blocks.block(block));
  // The texts of a block end where those of the next one begin.
  ByteReader next(_blocks.block(block + 1));
  const bool isLast = block + 1 >= _blocks.blockCount();
  const auto textsOf = [&](const LazyBytes& texts) {
    const std::uint64_t begin = reader.varint();
    const std::uint64_t end = isLast ? texts.size() : next.varint();
    return ByteReader(begin < end ? texts.part(begin, end - begin) : std::string_view());
  };
  const ByteReader fragments = textsOf(_fragments);
  const ByteReader headings = textsOf(_headings);
  Decoder decoder(fragments, headings);
  for (std::uint32_t before = document % documentsPerBlock; before > 0; --before) {
    for (std::uint64_t left = reader.varint(); left > 0 && reader.ok(); --left)
      decoder.skip(readPlace(reader));
  }
  const std::uint64_t count = reader.varint();
  if (count > placesPerDocument) return {};
  for (std::uint64_t left = count; left > 0 && reader.ok(); --left) {
    const StoredPlace stored = readPlace(reader);
    if (!reader.ok() || !decoder.add(stored)) return {};
  }
  return reader.ok() ? decoder.take() : DocumentPlaces();
}

void PlaceTableBuilder::add(const std::vector<IndexPlace>& places) {
  std::string& out = _blocks.entries();
  if (_documents++ % documentsPerBlock == 0) {
    _blocks.startBlock();
    appendVarint(out, _fragments.size());
    appendVarint(out, _headings.size());
  }
  appendVarint(out, places.size());
  std::uint32_t position = 0;
  std::string_view previous;
  for (const IndexPlace& place : places) {
    appendVarint(out, place.position - position);
    position = place.position;
    out += static_cast<char>(
        (place.level & levelBits) | (place.fragment.empty() ? 0U : hasFragment) |
        (place.heading.empty() ? 0U : hasHeading) | (place.headingIsName ? headingIsName : 0U));
    if (!place.fragment.empty()) {
      const std::size_t shared =
          std::min(sharedPrefixSize(previous, place.fragment), largestSharedPrefix);
      const std::string_view suffix = place.fragment.substr(shared);
      appendVarint(out, shared);
      appendVarint(out, suffix.size());
      _fragments += suffix;
      previous = place.fragment;
    }
    if (place.heading.empty()) continue;
    appendVarint(out, place.heading.size());
    _headings += place.heading;
  }
}

std::string PlaceTableBuilder::take() {
  std::string section;
  appendVarint(section, _fragments.size());
  appendVarint(section, _headings.size());
  return section.append(_fragments).append(_headings) + _blocks.take();
}

}  // namespace quorvex
