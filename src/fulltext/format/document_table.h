#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/lazy_bytes.h"
#include "common/once.h"

namespace quorvex {

/// What a DocumentTable stores of a document.
struct StoredDocument {
  std::uint32_t parentDistance = 0;  ///< how many documents back its parent is; 0: top level
  std::uint32_t length = 0;
  std::uint64_t codesSize = 0;
};

/// The document forest with the data that ranking needs, in columns of fixed width. Thread-safe.
class DocumentTable {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  DocumentTable() = default;
  /// Empty when the section is damaged.
  explicit DocumentTable(const LazyBytes& section);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_lengths.size()); }
  /// Document length: the number of terms kept.
  std::uint32_t length(std::uint32_t document) const { return _lengths[document]; }
  double averageLength() const;
  std::uint32_t parent(std::uint32_t document) const {
    return _parents.empty() ? none : _parents[document];
  }
  /// The first child, or the first top-level document for `none`; `none` if there is none.
  std::uint32_t firstChild(std::uint32_t document) const;
  std::uint32_t nextSibling(std::uint32_t document) const;
  /// Where a document's occurrences begin and end; may be beyond all occurrences.
  std::uint64_t codesBegin(std::uint32_t document) const;
  std::uint64_t codesEnd(std::uint32_t document) const;

 private:
  bool decode(const LazyBytes& section);
  bool endsAscend() const;
  bool decodeParents(const LazyBytes& column);
  void linkSiblings();

  std::vector<std::uint32_t> _lengths;
  LazyBytes _codeEnds;
  // Empty if all documents are on the top level.
  std::vector<std::uint32_t> _parents;
  std::vector<std::uint32_t> _firstChildren;  ///< the last entry: the first top-level document
  std::vector<std::uint32_t> _nextSiblings;
};

/// Makes the section of a DocumentTable.
std::string encodeDocuments(const std::vector<StoredDocument>& documents);

}  // namespace quorvex
