#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// Finds the prefixes that an index's words with a given stem may have. Thread-safe.
class StemBeginnings {
 public:
  /// Returns prefixes: each of the index's terms with this stem starts with exactly one of them.
  /// Only the empty one for a language whose stems may start differently from their words.
  /// `language`: that of the stemmer.
  std::vector<std::string> of(std::string_view language, std::string_view stem,
                              const IndexReader& index, Stemmer& stemmer) const;

 private:
  mutable std::mutex _mutex;
  mutable std::map<std::string, bool, std::less<>> _rulesHold;  ///< by language
};

}  // namespace quorvex::textsearch
