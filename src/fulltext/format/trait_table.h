#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/lazy_bytes.h"
#include "fulltext/format/text_sketch.h"

namespace quorvex {

/// What the text of a document mostly is; TSPageTraits explains the shares.
struct IndexTraits {
  std::uint8_t linkShare = 0;
  std::uint8_t codeShare = 0;
  TextSketch sketch = 0;
};

/// The traits of all documents, and the language that most of them state.
class TraitTable {
 public:
  TraitTable() = default;
  /// Without traits when the section is absent or damaged.
  TraitTable(const LazyBytes& section, std::uint32_t documentCount);

  std::optional<IndexTraits> traits(std::uint32_t document) const;
  const std::string& language() const { return _language; }
  /// Returns the link shares of all documents; none in an index without traits.
  std::string_view linkShares() const { return _linkShares.all(); }

 private:
  std::string _language;
  // One entry per document.
  LazyBytes _linkShares;
  LazyBytes _codeShares;
  LazyBytes _sketches;
};

/// Makes the section of a TraitTable. Numbers of one kind stand together, which compresses better.
std::string encodeTraits(std::string_view language, std::span<const IndexTraits> traits);

}  // namespace quorvex
