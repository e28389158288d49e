#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/document_places.h"
#include "fulltext/searching/title_index.h"

namespace quorvex::textsearch {

/// Looking at what surrounds a place takes up to some microseconds.
inline constexpr std::size_t mostSurroundings = 4096;
/// The quality of what the title of its page qualifies; Surroundings::qualityOf() gives no more.
inline constexpr float qualifiedByTitle = 0.94F;

/// How much one query may look at.
struct LookLimits {
  std::size_t looks = mostSurroundings;
  /// A look takes much longer where pages have many places.
  std::size_t placeBytes = std::size_t{32} << 20U;
};

/// What one query may still look at, and the places of the page that it looked at last: names that
/// follow each other often stand on the same page.
class Looks {
 public:
  explicit Looks(const IndexReader& index, const LookLimits& limits = {})
      : _index(index), _left(limits.looks), _bytesLeft(limits.placeBytes) {}

  /// Counts one look; false when none is left.
  bool take() { return _left > 0 && _left-- > 0; }

  /// Null when too much has been read.
  const PlacesOfDocument* places(std::uint32_t document);

 private:
  const IndexReader& _index;
  std::size_t _left;
  std::size_t _bytesLeft;
  std::uint32_t _document = 0;
  std::optional<PlacesOfDocument> _places;
};

/// What stands around a place, case-folded; each part is read when it is first asked for.
class Surroundings {
 public:
  Surroundings(const IndexReader& index, const TitleIndex& titles, Looks& looks,
               const NamePlace& at)
      : _index(index), _titles(titles), _looks(looks), _at(at) {}

  /// How well all words are found here; 0 if one is not. `own`: the folded name of the place.
  float qualityOf(const std::vector<std::string_view>& words, std::string_view own);

  /// The fragment, with the folded name of the place.
  std::string fragment(std::string_view own);

 private:
  const std::string& nameOfPage();
  bool titleBeginsWith(std::string_view word);
  const std::string& title();
  const std::string& path();
  const std::string& headings();

  const IndexReader& _index;
  const TitleIndex& _titles;
  Looks& _looks;
  NamePlace _at;
  std::optional<std::string> _title, _name, _path, _headings;
};

}  // namespace quorvex::textsearch
