#pragma once

#include <string>
#include <vector>

#include "fulltext/searching/ranking.h"
#include "platform/textsift.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// Returns what the words of a query are found by in a text.
TSSearchTerms termsOf(const std::vector<RankedWord>& words);

/// Collects where terms stand in a text.
class TermPlaces {
 public:
  /// `terms` must outlive it.
  explicit TermPlaces(const TSSearchTerms& terms)
      : _terms(terms), _isJoinedThere(terms.parts.size()) {}

  /// The tokens of the text, ascending.
  void add(const Token& token);
  std::vector<TSTextRange> take();

 private:
  struct Place {
    TSTextRange range;
    std::string part;  ///< empty for a word
  };

  bool counts(const Place& place) const;

  const TSSearchTerms& _terms;
  std::vector<bool> _isJoinedThere;  ///< of _terms.parts
  std::vector<Place> _places;
};

}  // namespace quorvex::textsearch
