#include "fulltext/searching/name_surroundings.h"

#include <algorithm>

#include "common/unicode.h"
#include "fulltext/searching/name_text.h"
#include "text/identifiers.h"

namespace quorvex::textsearch {

namespace {

// Below qualifiedByTitle, what else may qualify a name.
constexpr float qualifiedByTitleEnd = 0.937F;
constexpr float qualifiedByHeading = 0.93F;
constexpr float qualifiedInTitle = 0.925F;
constexpr float qualifiedByPath = 0.92F;

}  // namespace

const PlacesOfDocument* Looks::places(std::uint32_t document) {
  if (_places && _document == document) return &*_places;
  const std::size_t cost = _index.places().costOf(document);
  if (cost > _bytesLeft) return nullptr;
  _bytesLeft -= cost;
  _document = document;
  return &_places.emplace(_index, document);
}

float Surroundings::qualityOf(const std::vector<std::string_view>& words, std::string_view own) {
  float quality = qualifiedByTitle;
  for (const std::string_view word : words) {
    if (holdsIdentifier(own, word) || titleBeginsWith(word)) continue;
    if (endsWithParts(nameOfPage(), word)) {
      quality = std::min(quality, qualifiedByTitleEnd);
    } else if (holdsIdentifier(headings(), word)) {
      quality = std::min(quality, qualifiedByHeading);
    } else if (holdsIdentifier(title(), word)) {
      quality = std::min(quality, qualifiedInTitle);
    } else if (holdsIdentifier(path(), word)) {
      quality = std::min(quality, qualifiedByPath);
    } else {
      return 0;
    }
  }
  return quality;
}

std::string Surroundings::fragment(std::string_view own) {
  const PlacesOfDocument* places = _looks.places(_at.document);
  if (places == nullptr || _at.place >= places->size()) return {};
  std::string fragment = caseFolded((*places)[_at.place].fragment);
  if (const std::size_t name = fragment.find(nameInFragment); name != fragment.npos) {
    fragment.replace(name, 1, own);
  }
  return fragment;
}

const std::string& Surroundings::nameOfPage() {
  if (!_name) _name = caseFolded(nameInTitle(title()));
  return *_name;
}

/// "Vec in std::vec" begins with "vec", "std::vec" does not begin with "std".
bool Surroundings::titleBeginsWith(std::string_view word) {
  const std::string_view name = nameOfPage();
  if (!name.starts_with(word)) return false;
  return name.size() == word.size() ||
         (!isIdentifierByte(name[word.size()]) && name[word.size()] != ':');
}

const std::string& Surroundings::title() {
  if (!_title) _title = caseFolded(_titles.title(_at.document));
  return *_title;
}

const std::string& Surroundings::path() {
  if (!_path) _path = caseFolded(_index.url(_at.document).value_or(std::string()));
  return *_path;
}

/// Also the fragment, which often has what a heading leaves out.
const std::string& Surroundings::headings() {
  if (!_headings) {
    std::string text;
    const PlacesOfDocument* places = _looks.places(_at.document);
    if (places != nullptr && _at.place < places->size()) {
      text = (*places)[_at.place].fragment;
      for (const std::string& heading : places->headings(_at.place))
        text.append("\n").append(heading);
    }
    _headings = caseFolded(text);
  }
  return *_headings;
}

}  // namespace quorvex::textsearch
