#include "fulltext/format/trait_table.h"

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "common/locale.h"

namespace quorvex {

namespace {

constexpr std::size_t sketchSize = sizeof(TextSketch);

}  // namespace

TraitTable::TraitTable(const LazyBytes& section, std::uint32_t documentCount) {
  LazyReader reader(section);
  const std::string_view language = reader.text().all();
  const LazyBytes linkShares = reader.bytes(documentCount);
  const LazyBytes codeShares = reader.bytes(documentCount);
  const LazyBytes sketches = reader.bytes(std::uint64_t{documentCount} * sketchSize);
  if (!reader.ok() || (!language.empty() && !isLanguageTag(language))) return;
  _language = language;
  _linkShares = linkShares;
  _codeShares = codeShares;
  _sketches = sketches;
}

std::optional<IndexTraits> TraitTable::traits(std::uint32_t document) const {
  if (document >= _linkShares.size()) return std::nullopt;
  return IndexTraits{.linkShare = ByteReader(_linkShares.part(document, 1)).byte(),
                     .codeShare = ByteReader(_codeShares.part(document, 1)).byte(),
                     .sketch = ByteReader(_sketches.part(document * sketchSize, sketchSize)).u64()};
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
