#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"

namespace quorvex::textsearch {

/// The places of one document with their nesting.
class PlacesOfDocument {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  PlacesOfDocument(const IndexReader& index, std::uint32_t document);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_stored.places.size()); }
  bool haveFragments() const;
  /// The heading that repeats the title; `none` if there is none.
  std::uint32_t headingOfPage() const;
  const IndexPlace& operator[](std::uint32_t place) const { return _stored.places[place]; }

  /// The heading or term that encloses a place; `none` at the top.
  std::uint32_t parent(std::uint32_t place) const { return _parents[place]; }
  /// Where the text that belongs to a place and to no heading or term in it ends, as a position.
  std::uint32_t end(std::uint32_t place) const { return _ends[place]; }

  /// The nearest place with a fragment: this one, one that encloses it, or one before it.
  /// `place` may be `none`.
  std::uint32_t linked(std::uint32_t place) const;
  std::string fragment(std::uint32_t place) const;
  /// Empty for a place that is neither a heading nor a term.
  std::string heading(std::uint32_t place) const;
  /// The headings and terms from the top down to a place, itself included.
  std::vector<std::string> headings(std::uint32_t place) const;

 private:
  std::string nameAt(std::uint32_t place) const;

  const IndexReader& _index;
  std::uint32_t _document;
  DocumentPlaces _stored;
  mutable std::optional<std::vector<NameAtPlace>> _names;  ///< once they are asked for
  std::vector<std::uint32_t> _parents;
  std::vector<std::uint32_t> _ends;
  std::vector<std::uint32_t> _lastLinked;  ///< the last place with a fragment up to each
};

}  // namespace quorvex::textsearch
