#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include "text/ideograph_runs.h"
#include "text/word_class.h"

namespace quorvex {

/// The byte range of a word in a text. `foldingNeeded`: folding may change it.
struct Word {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool foldingNeeded = false;
};

/// Finds the words of a text by UAX #29. Splits the text into zones at ASCII white space or an at
/// sign, where segmentation starts afresh: zones of simple characters are scanned directly, zones
/// around complex ones go through ICU. If such a zone has Chinese or Japanese, it is cut further,
/// between characters that are certain to be in different words: runs of ideographs and kana, each
/// of which ICU cuts once, simple pieces, and pieces around what is left.
class WordSegmenter {
 public:
  WordSegmenter();
  ~WordSegmenter();
  WordSegmenter(const WordSegmenter&) = delete;
  WordSegmenter& operator=(const WordSegmenter&) = delete;

  void reset(std::string_view text);
  bool next(Word& word);

 private:
  struct Character {
    WordClass wordClass;
    std::size_t size;
    bool isComplex;  ///< not for the scan of a simple zone
  };

  bool startZone();
  std::size_t skipSimple(std::size_t position, std::size_t limit) const;
  std::size_t complexZoneEnd(std::size_t begin, std::size_t position) const;
  void openComplexZone(std::size_t end);
  std::size_t runEnd(std::size_t position, std::uint32_t& seen, WordClass& last) const;
  void startPiece();
  bool startSimplePiece();
  std::size_t icuPieceEnd(std::size_t position) const;
  void openIcuPiece(std::size_t end);
  bool nextSimple(Word& word);
  bool nextOfRun(Word& word);
  bool nextOfIcu(Word& word);
  bool joins(WordClass previous, WordClass middle, std::size_t position) const;
  Character characterAt(std::size_t position) const;
  Character wideCharacterAt(std::size_t position) const;
  bool isCut(std::size_t position) const;

  const WordClasses& _classes;
  std::unique_ptr<icu::BreakIterator> _iterator;
  UText _iteratorText = UTEXT_INITIALIZER;
  std::string_view _text;
  std::size_t _position = 0;  ///< in the simple zone or piece
  std::size_t _simpleEnd = 0;
  std::size_t _complexBegin = 0;  ///< what is left of the next zone, which may be empty
  std::size_t _complexEnd = 0;
  bool _hasRuns = false;      ///< in the complex zone
  std::size_t _icuBegin = 0;  ///< the piece for ICU
  std::size_t _icuEnd = 0;
  IdeographRuns _runs;
  std::size_t _runPosition = 0;  ///< in the text, behind the run's last word
  std::uint64_t _runEnds = 0;    ///< of the words from there on, as bits from the lowest
};

}  // namespace quorvex
