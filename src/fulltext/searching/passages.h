#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/searching/document_places.h"
#include "fulltext/searching/proximity.h"
#include "fulltext/searching/ranking.h"

namespace quorvex::textsearch {

/// The text of a place that answers a query.
struct Passage {
  std::uint32_t place = 0;
  bool holdsPhrase = false;
  float score = 0;  ///< like that of a document
  /// Compares passages of one document, in which words that stand everywhere tell nothing.
  float distinction = 0;
  /// The positions between which the words stand densest.
  std::uint32_t begin = 0;
  std::uint32_t end = 0;

  /// Best first.
  friend bool operator<(const Passage& a, const Passage& b) {
    if (a.holdsPhrase != b.holdsPhrase) return a.holdsPhrase;
    return a.distinction != b.distinction ? a.distinction > b.distinction : a.place < b.place;
  }
};

/// Finds the places of a document where the words of a query stand. The text of a place, without
/// that of headings and terms in it, is scored like a document of its own (BM25); words in the
/// headings above it count a little.
class PassageFinder {
 public:
  PassageFinder(const Ranker& ranker, const std::vector<RankedWord>& words,
                const std::vector<WordSequence>& phrases);

  /// Returns the passages with at least one word, best first. Text above the first place counts as
  /// a passage of the place `none`.
  std::vector<Passage> find(const PlacesOfDocument& places, const Occurrences& occurrences);

 private:
  using Iterator = Occurrences::const_iterator;

  void weighWords(const PlacesOfDocument& places, const Occurrences& occurrences);
  Passage passageAt(const PlacesOfDocument& places, const Occurrences& occurrences,
                    std::uint32_t place);
  void addHeadings(const PlacesOfDocument& places, const Occurrences& occurrences,
                   std::uint32_t place);
  float focus(Iterator begin, Iterator end, Passage& passage) const;
  bool holdPhrase(Iterator begin, Iterator end, Passage& passage) const;

  const std::vector<RankedWord>& _words;
  const std::vector<WordSequence>& _phrases;
  std::vector<float> _importance;
  std::size_t _overlapLeft = 0;     ///< occurrences that passages of fragments may still read
  std::vector<float> _frequencies;  ///< of each word in one passage
  std::vector<float> _rarities;     ///< of each word in the document, at most 1
};

}  // namespace quorvex::textsearch
