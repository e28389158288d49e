#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/lazy_bytes.h"
#include "text/term_dictionary.h"

namespace quorvex {

/// Finds the occurrence code of a term: its number when all terms are sorted by falling document
/// count, then by id, counted from 1. Stores how many terms of each count the groups of the
/// dictionary hold, so that only the term's own group need be read.
class CodeTable {
 public:
  CodeTable() = default;
  /// Gives no codes when the section is damaged.
  explicit CodeTable(const LazyBytes& section);

  /// Returns 0 if there is none. `terms`: those that the table was made for.
  std::uint32_t code(const TermEntry& term, const TermDictionary& terms) const;

 private:
  /// The terms with one document count.
  struct CountClass {
    std::uint32_t count = 0;
    std::uint32_t termsBefore = 0;  ///< terms with a larger count
    std::size_t begin = 0;          ///< of its groups in the section
    std::size_t end = 0;
  };

  LazyBytes _section;
  std::vector<CountClass> _classes;  ///< counts fall
};

/// Makes the section of a CodeTable; the counts are those of all terms by id.
std::string encodeCodes(const std::vector<std::uint32_t>& documentCounts);

}  // namespace quorvex
