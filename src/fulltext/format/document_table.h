#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvex {

/// The forest of documents with what ranking needs of each.
class DocumentTable {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  DocumentTable() = default;
  /// Empty when the section is damaged. `occurrencesSize`: bytes that the documents may share.
  DocumentTable(std::string_view section, std::uint64_t occurrencesSize);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_lengths.size()); }
  /// Terms kept of a document.
  std::uint32_t length(std::uint32_t document) const { return _lengths[document]; }
  double averageLength() const;
  std::uint32_t parent(std::uint32_t document) const { return _parents[document]; }
  /// The first child, of the forest itself for `none`; `none` when there is none.
  std::uint32_t firstChild(std::uint32_t document) const;
  std::uint32_t nextSibling(std::uint32_t document) const { return _nextSiblings[document]; }
  /// Where the occurrences of a document begin; those of the next one begin where they end.
  std::uint64_t codesBegin(std::uint32_t document) const { return _codeOffsets[document]; }
  std::uint64_t codesEnd(std::uint32_t document) const { return _codeOffsets[document + 1]; }

 private:
  bool decode(std::string_view section, std::uint64_t occurrencesSize);
  void linkSiblings();

  std::vector<std::uint32_t> _parents;
  std::vector<std::uint32_t> _lengths;
  std::vector<std::uint64_t> _codeOffsets;
  std::vector<std::uint32_t> _firstChildren;  ///< the last one for the forest itself
  std::vector<std::uint32_t> _nextSiblings;
};

}  // namespace quorvex
