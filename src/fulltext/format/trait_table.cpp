#include "fulltext/format/trait_table.h"

#include "common/bytes.h"
#include "common/locale.h"

namespace quorvex {

namespace {

constexpr std::size_t sketchSize = sizeof(TextSketch);

}  // namespace

TraitTable::TraitTable(std::string_view section, std::uint32_t documentCount) {
  ByteReader reader(section);
  const std::string_view language = reader.text();
  const std::string_view linkShares = reader.bytes(documentCount);
  const std::string_view codeShares = reader.bytes(documentCount);
  const std::string_view sketches = reader.bytes(std::uint64_t{documentCount} * sketchSize);
  if (!reader.ok() || (!language.empty() && !isLanguageTag(language))) return;
  _language = language;
  _linkShares = linkShares;
  _codeShares = codeShares;
  _sketches = sketches;
}

std::optional<IndexTraits> TraitTable::traits(std::uint32_t document) const {
  if (document >= _linkShares.size()) return std::nullopt;
  return IndexTraits{
      .linkShare = static_cast<std::uint8_t>(_linkShares[document]),
      .codeShare = static_cast<std::uint8_t>(_codeShares[document]),
      .sketch = ByteReader(_sketches.substr(document * sketchSize, sketchSize)).u64()};
}

std::string encodeTraits(std::string_view language, std::span<const IndexTraits> traits) {
  std::string section;
  appendText(section, language);
  for (const IndexTraits& each : traits)
    section += static_cast<char>(each.linkShare);
  for (const IndexTraits& each : traits)
    section += static_cast<char>(each.codeShare);
  for (const IndexTraits& each : traits)
    appendU64(section, each.sketch);
  return section;
}

}  // namespace quorvex
