#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvex {

/// The document forest with the data that ranking needs.
class DocumentTable {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  DocumentTable() = default;
  /// Empty when the section is damaged. `occurrencesSize`: bytes available to all documents.
  DocumentTable(std::string_view section, std::uint64_t occurrencesSize);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_lengths.size()); }
  /// Document length: the number of terms kept.
  std::uint32_t length(std::uint32_t document) const { return _lengths[document]; }
  double averageLength() const;
  std::uint32_t parent(std::uint32_t document) const { return _parents[document]; }
  /// The first child, or the first top-level document for `none`; `none` if there is none.
  std::uint32_t firstChild(std::uint32_t document) const;
  std::uint32_t nextSibling(std::uint32_t document) const { return _nextSiblings[document]; }
  /// Where a document's occurrences begin; they end where the next document's begin.
  std::uint64_t codesBegin(std::uint32_t document) const { return _codeOffsets[document]; }
  std::uint64_t codesEnd(std::uint32_t document) const { return _codeOffsets[document + 1]; }

 private:
  bool decode(std::string_view section, std::uint64_t occurrencesSize);
  void linkSiblings();

  std::vector<std::uint32_t> _parents;
  std::vector<std::uint32_t> _lengths;
  std::vector<std::uint64_t> _codeOffsets;
  std::vector<std::uint32_t> _firstChildren;  ///< the last entry: the first top-level document
  std::vector<std::uint32_t> _nextSiblings;
};

}  // namespace quorvex
