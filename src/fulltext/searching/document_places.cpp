#include "fulltext/searching/document_places.h"

#include <algorithm>

namespace quorvex::textsearch {

PlacesOfDocument::PlacesOfDocument(const IndexReader& index, std::uint32_t document)
    : _index(index), _document(document), _stored(index.places().places(document)) {
  _parents.reserve(size());
  std::vector<std::uint32_t> open;
  for (std::uint32_t i = 0; i < size(); ++i) {
    const unsigned level = _stored.places[i].level;
    while (level > 0 && !open.empty() && _stored.places[open.back()].level >= level)
      open.pop_back();
    _parents.push_back(open.empty() ? none : open.back());
    const bool hasFragment = !_stored.places[i].fragment.empty();
    _lastLinked.push_back(hasFragment ? i : i == 0 ? none : _lastLinked.back());
    if (level > 0 && !_stored.places[i].isEndOfList()) open.push_back(i);
  }
  _ends.resize(size());
  std::uint32_t end = UINT32_MAX;
  for (std::uint32_t i = size(); i-- > 0;) {
    _ends[i] = end;
    if (_stored.places[i].level > 0) end = _stored.places[i].position;
  }
}

bool PlacesOfDocument::haveFragments() const {
  return std::ranges::any_of(_stored.places,
                             [](const IndexPlace& place) { return !place.fragment.empty(); });
}

std::uint32_t PlacesOfDocument::headingOfPage() const {
  const auto isOfPage = [](const IndexPlace& place) {
    return place.level > 0 && place.level <= deepestHeading && place.heading.empty() &&
           !place.headingIsName;
  };
  const auto found = std::ranges::find_if(_stored.places, isOfPage);
  return found == _stored.places.end() ? none
                                       : static_cast<std::uint32_t>(found - _stored.places.begin());
}

std::uint32_t PlacesOfDocument::linked(std::uint32_t place) const {
  for (std::uint32_t at = place; at != none; at = _parents[at]) {
    if (!_stored.places[at].fragment.empty()) return at;
  }
  return place == none ? none : _lastLinked[place];
}

std::string PlacesOfDocument::nameAt(std::uint32_t place) const {
  if (!_names) _names = _index.namesOf(_document);
  const auto found = std::ranges::lower_bound(*_names, place, {}, &NameAtPlace::place);
  return found != _names->end() && found->place == place ? _index.name(found->name) : std::string();
}

std::string PlacesOfDocument::fragment(std::uint32_t place) const {
  std::string fragment(_stored.places[place].fragment);
  if (const std::size_t at = fragment.find(nameInFragment); at != fragment.npos) {
    fragment.replace(at, 1, nameAt(place));
  }
  return fragment;
}

std::string PlacesOfDocument::heading(std::uint32_t place) const {
  const IndexPlace& stored = _stored.places[place];
  return stored.headingIsName ? nameAt(place) : std::string(stored.heading);
}

std::vector<std::string> PlacesOfDocument::headings(std::uint32_t place) const {
  std::vector<std::string> headings;
  for (std::uint32_t at = place; at != none; at = _parents[at]) {
    if (std::string text = heading(at); !text.empty()) headings.push_back(std::move(text));
  }
  std::ranges::reverse(headings);
  return headings;
}

}  // namespace quorvex::textsearch
