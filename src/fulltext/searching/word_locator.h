#pragma once

#include <cstdint>
#include <optional>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "platform/textsift.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// Finds positions of a document again in its text, which may have changed since it was indexed:
/// the words around them, and the number of all words, must still fit.
class WordLocator {
 public:
  WordLocator(const IndexReader& index, const WordFilter& filter, Tokenizer& tokenizer)
      : _index(index), _filter(filter), _tokenizer(tokenizer) {}

  /// As TSSearchLocate() with begin < end.
  std::optional<TSLocatedWords> locate(std::uint32_t document, const TSTextPart& part,
                                       std::uint32_t begin, std::uint32_t end, std::size_t margin);

 private:
  const IndexReader& _index;
  const WordFilter& _filter;
  Tokenizer& _tokenizer;
};

}  // namespace quorvex::textsearch
