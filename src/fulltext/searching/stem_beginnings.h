#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// Where in the byte order of an index the words with one stem may stand. Safe from several
/// threads.
class StemBeginnings {
 public:
  /// Texts, one of which begins each of the index's terms with this stem; no two begin the same. It
  /// is the empty text alone for a language whose stems may begin otherwise than their words.
  /// `language`: that of the stemmer.
  std::vector<std::string> of(std::string_view language, std::string_view stem,
                              const IndexReader& index, Stemmer& stemmer) const;

 private:
  mutable std::mutex _mutex;
  mutable std::map<std::string, bool, std::less<>> _rulesHold;  ///< by language
};

}  // namespace quorvex::textsearch
