#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/term_dictionary.h"

namespace quorvex {

/// The operators of texts and the documents that have them, read in place: a dictionary of its own
/// with posting lists.
class OperatorTable {
 public:
  OperatorTable() = default;
  /// Empty when the section is absent or damaged.
  explicit OperatorTable(const LazyBytes& section);

  const TermDictionary& operators() const { return _operators; }
  /// As of terms.
  const LazyBytes& postings() const { return _postings; }
  const LazyBytes& frequencies() const { return _frequencies; }

 private:
  TermDictionary _operators;
  LazyBytes _postings;
  LazyBytes _frequencies;
};

/// Makes the section of an OperatorTable; `frequencies`: one per posting. See encodeTerms().
std::string encodeOperators(const std::vector<std::string_view>& operators,
                            const std::vector<std::uint32_t>& documentCounts,
                            const std::vector<std::uint32_t>& postingDocuments,
                            std::string_view frequencies);

}  // namespace quorvex
