#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// Splits compounds of languages that write them as one word, and finds those with a given word,
/// with no other knowledge of the words than an index and the elements that link them.
class CompoundWords {
 public:
  /// Returns the documents that have any form of a word; 0 if there are none. Asked about what is
  /// not a term itself.
  using DocumentsWithForms = std::function<std::size_t(std::string_view word)>;

  /// Whether words of a language are split. `language`: ISO 639 code in lower case.
  static bool isFor(std::string_view language);

  /// `stemmer`: of the language. All must outlive this object.
  CompoundWords(const IndexReader& index, const TitleIndex& titles, std::string_view language,
                Stemmer& stemmer, DocumentsWithForms documentsWithForms = nullptr);

  /// Returns the words that a word is made of, without linking elements where the book has them
  /// so: as few as possible, and of those the most frequent. Empty if the word is no compound of
  /// two to four known words. Does not ask whether the word itself is known.
  std::vector<std::string> partsOf(std::string_view word) const;

  /// Returns terms that begin or end with a word and are made of it and something else, those in
  /// the most documents first.
  std::vector<std::string> compoundsWith(std::string_view word, std::size_t count = 64) const;

 private:
  /// A part as it stands in a compound and as a word.
  struct Part {
    std::string_view word;
    std::size_t documents = 0;
    bool isForm = false;  ///< known by other forms of it only
  };

  std::optional<Part> partIn(std::string_view text, bool isLast) const;
  std::size_t documentsWith(std::string_view term) const;
  bool isHeadOf(std::string_view term, std::string_view word, std::string_view common,
                std::string_view stem) const;
  bool isModifierOf(std::string_view term, std::string_view begin) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  std::span<const std::string_view> _links;
  std::span<const std::string_view> _particles;
  std::span<const std::string_view> _endings;
  Stemmer& _stemmer;
  DocumentsWithForms _documentsWithForms;
};

}  // namespace quorvex::textsearch
