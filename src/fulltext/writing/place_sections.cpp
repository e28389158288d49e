#include "fulltext/writing/place_sections.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

#include "common/bytes.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/name_table.h"
#include "fulltext/format/place_table.h"

namespace quorvex {

namespace {

// On more than one in so many pages, or in a small book on more than a few, a fragment without a
// name belongs to the layout, a definition to all things, and a heading or title names nothing.
constexpr std::size_t plainShare = 10;
constexpr std::size_t definitionShare = 2;
constexpr std::size_t headingShare = 50;
constexpr std::size_t fewestRepetitions = 20;

/// A place, referring to where it is packed.
struct PackedPlace {
  IndexPlace place;
  std::vector<DefinedName> names;
};

void unpack(std::uint32_t position, ByteReader& reader, PackedPlace& packed) {
  packed.place = {.position = position,
                  .level = reader.byte(),
                  .fragment = reader.text(),
                  .heading = reader.text()};
  packed.names.clear();
  for (std::uint64_t left = reader.varint(); left > 0 && reader.ok(); --left) {
    const std::uint8_t kind = reader.byte();
    packed.names.push_back({.name = reader.text(), .kind = kind, .place = {}});
  }
}

template <typename Visit>
void forEachPlace(const PendingDocument& document, const Visit& visit) {
  PackedPlace place;
  ByteReader reader(document.places.entries);
  for (const std::uint32_t position : document.places.offsets) {
    unpack(position, reader, place);
    visit(place);
  }
}

/// What repeats throughout a book belongs to the layout of its pages, or names none of them.
class Repetitions {
 public:
  explicit Repetitions(const std::vector<PendingDocument>& documents) {
    std::size_t withFragments = 0;
    for (const PendingDocument& document : documents) {
      bool hasFragment = false;
      forEachPlace(document, [&](const PackedPlace& place) {
        hasFragment = hasFragment || !place.place.fragment.empty();
        if (mayRepeat(place)) ++_fragments[place.place.fragment];
        for (const DefinedName& name : place.names) {
          if (isWords(name)) ++_headings[name.name];
        }
      });
      withFragments += hasFragment ? 1 : 0;
    }
    _mostPlain = std::max(fewestRepetitions, withFragments / plainShare);
    _mostDefinitions = std::max(fewestRepetitions, withFragments / definitionShare);
    _mostHeadings = std::max(fewestRepetitions, withFragments / headingShare);
  }

  /// Headings are places to go to, however many pages have them.
  bool isFurniture(const PackedPlace& place) const {
    const unsigned level = place.place.level;
    if (level > 0 && level <= deepestHeading) return false;
    return mayRepeat(place) && _fragments.find(place.place.fragment)->second >
                                   (place.names.empty() ? _mostPlain : _mostDefinitions);
  }
  bool isCommon(const DefinedName& name, const IndexPlace& place) const {
    if (isWords(name)) return _headings.find(name.name)->second > _mostHeadings;
    const auto fragment = _fragments.find(place.fragment);
    return fragment != _fragments.end() && fragment->second > _mostDefinitions;
  }

 private:
  using Counts = std::unordered_map<std::string_view, std::size_t>;

  static bool isWords(const DefinedName& name) {
    return name.kind == static_cast<std::uint8_t>(TSNameKind::heading);
  }
  /// Whether it matters how many pages have the fragment.
  static bool mayRepeat(const PackedPlace& place) {
    const bool isDefinition = !place.names.empty() && !isWords(place.names.front());
    return !place.place.fragment.empty() && (place.place.level == 0 || isDefinition);
  }

  std::size_t _mostPlain = 0;
  std::size_t _mostDefinitions = 0;
  std::size_t _mostHeadings = 0;
  Counts _fragments;
  Counts _headings;
};

/// Chooses what an index keeps of the places of one document.
class Selection {
 public:
  Selection(const Repetitions& repetitions, std::vector<DefinedName>& names)
      : _repetitions(repetitions), _names(names) {}

  const std::vector<IndexPlace>& placesOf(const PendingDocument& document, std::uint32_t id) {
    _kept.clear();
    _fragments.clear();
    _openLevel = 0;
    forEachPlace(document, [&](PackedPlace& place) { add(place, id); });
    return _kept;
  }

 private:
  /// Stores the only name of a place once: most headings and fragments are made of it.
  void omitName(std::string_view name, IndexPlace& place) {
    place.headingIsName = place.heading == name;
    if (place.headingIsName) place.heading = {};
    const std::size_t at = place.fragment.find(name);
    if (at == place.fragment.npos) return;
    std::string& rest = _fragments.emplace_back(place.fragment.substr(0, at));
    rest += nameInFragment;
    rest += place.fragment.substr(at + name.size());
    place.fragment = rest;
  }

  void add(PackedPlace& packed, std::uint32_t document) {
    if (_kept.size() == placesPerDocument) return;
    IndexPlace& place = packed.place;
    if (place.isEndOfList()) {
      if (_openLevel < place.level) return;
      _openLevel = place.level - 1U;
    } else {
      if (_repetitions.isFurniture(packed)) return;
      std::erase_if(packed.names,
                    [&](const DefinedName& name) { return _repetitions.isCommon(name, place); });
      const bool isTerm = place.level > deepestHeading;
      if (isTerm && packed.names.empty() && place.fragment.empty()) return;
      if (isTerm) _openLevel = std::max<unsigned>(_openLevel, place.level);
    }
    // Where a heading or a term follows that is not deeper, the end goes without saying.
    if (!_kept.empty() && _kept.back().isEndOfList() && _kept.back().position == place.position &&
        place.level > 0 && place.level <= _kept.back().level)
      _kept.pop_back();
    if (packed.names.size() == 1) omitName(packed.names.front().name, place);
    for (DefinedName& name : packed.names) {
      name.place = {.document = document, .place = static_cast<std::uint32_t>(_kept.size())};
      _names.push_back(name);
    }
    _kept.push_back(place);
  }

  const Repetitions& _repetitions;
  std::vector<DefinedName>& _names;
  std::vector<IndexPlace> _kept;
  std::deque<std::string> _fragments;  ///< without their names
  unsigned _openLevel = 0;             ///< of the deepest open term
};

}  // namespace

PlaceSections encodePlaces(const std::vector<PendingDocument>& documents) {
  const Repetitions repetitions(documents);
  std::vector<DefinedName> names;
  Selection selection(repetitions, names);
  PlaceTableBuilder table;
  for (std::uint32_t id = 0; id < documents.size(); ++id)
    table.add(selection.placesOf(documents[id], id));
  return {table.take(), encodeNames(std::move(names))};
}

}  // namespace quorvex
