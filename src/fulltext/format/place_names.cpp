#include "fulltext/format/place_names.h"

#include <algorithm>

#include "common/bytes.h"
#include "fulltext/format/index_format.h"

namespace quorvex {

namespace {

/// Numbers of either sign, small ones first.
std::uint64_t zigzag(std::int64_t number) {
  const std::uint64_t doubled = static_cast<std::uint64_t>(number) << 1U;
  return number < 0 ? ~doubled : doubled;
}
std::int64_t fromZigzag(std::uint64_t number) {
  return static_cast<std::int64_t>(number >> 1U ^ (~(number & 1U) + 1));
}

std::vector<NameAtPlace> readList(ByteReader& reader) {
  std::vector<NameAtPlace> list;
  std::uint64_t place = 0;
  std::int64_t name = 0;
  for (std::uint64_t left = reader.varint(); left > 0; --left) {
    place += reader.varint32();
    name += fromZigzag(reader.varint());
    if (!reader.ok() || place > UINT32_MAX || name < 0 || name > std::int64_t{UINT32_MAX}) break;
    list.push_back({static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(name)});
  }
  return list;
}

bool refersToName(const IndexPlace& place) {
  return place.headingIsName || place.fragment.find(nameInFragment) != place.fragment.npos;
}

}  // namespace

PlaceNames::PlaceNames(const LazyBytes& section, std::uint32_t documentCount)
    : _blocks(section, documentCount, documentsPerBlock) {}

std::vector<NameAtPlace> PlaceNames::of(std::uint32_t document) const {
  ByteReader reader(_blocks.block(document / documentsPerBlock));
  for (std::uint32_t before = document % documentsPerBlock; before > 0 && reader.ok(); --before)
    readList(reader);
  return readList(reader);
}

std::string encodePlaceNames(const NameTable& names, const PlaceTable& places,
                             std::uint32_t documentCount) {
  if (names.size() == 0) return {};
  std::vector<std::vector<NameAtPlace>> all(documentCount);
  std::uint32_t number = 0;
  for (NameTable::Cursor name(names); name.next(); ++number) {
    for (const NamePlace& at : name.entry().places) {
      if (at.document < documentCount) all[at.document].push_back({at.place, number});
    }
  }
  BlockTableBuilder table;
  for (std::uint32_t document = 0; document < documentCount; ++document) {
    if (document % documentsPerBlock == 0) table.startBlock();
    std::vector<NameAtPlace>& list = all[document];
    if (!list.empty()) {
      const DocumentPlaces stored = places.places(document);
      std::erase_if(list, [&](const NameAtPlace& at) {
        return at.place >= stored.places.size() || !refersToName(stored.places[at.place]);
      });
      std::ranges::stable_sort(list, {}, &NameAtPlace::place);
    }
    appendVarint(table.entries(), list.size());
    NameAtPlace previous;
    for (const NameAtPlace& at : list) {
      appendVarint(table.entries(), at.place - previous.place);
      appendVarint(table.entries(), zigzag(std::int64_t{at.name} - std::int64_t{previous.name}));
      previous = at;
    }
  }
  return table.take();
}

}  // namespace quorvex
