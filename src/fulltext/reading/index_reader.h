#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/once.h"
#include "common/value.h"
#include "fulltext/format/analysis_section.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/document_table.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/name_table.h"
#include "fulltext/format/operator_table.h"
#include "fulltext/format/place_table.h"
#include "fulltext/format/term_dictionary.h"
#include "fulltext/format/trait_table.h"

namespace quorvex {

/// Walks the posting list of one term; documents ascend.
class PostingCursor {
 public:
  PostingCursor(std::string_view postings, std::string_view frequencies,
                std::uint32_t documentCount);
  bool next();
  std::uint32_t document() const { return _document; }
  /// The term frequency in the document, at most 255.
  std::uint32_t frequency() const { return _frequency; }

 private:
  std::string_view _postings;
  std::string_view _frequencies;
  std::uint32_t _documentCount;
  std::uint64_t _expected = 0;
  std::uint32_t _document = 0;
  std::uint32_t _frequency = 0;
};

/// An index, read in place. Sections are decoded, and their checksums verified, on first use; a
/// damaged section reads as empty. Thread-safe.
class IndexReader {
 public:
  /// Null when the bytes are not an index.
  static std::shared_ptr<const IndexReader> open(const Data& data);

  /// Saves the first search a delay: verifies the sections that searches need and builds the term
  /// codes.
  void prepareForSearch() const;

  const IndexDescription& description() const;
  const DocumentTable& documents() const;
  const TermDictionary& terms() const;

  // Empty in an index without these sections.
  const PlaceTable& places() const;
  const NameTable& names() const;
  /// Returns the name that is defined at a place; empty if there is none. The first call
  /// inverts the names, which costs eight bytes per place of a name.
  std::string nameAt(const NamePlace& place) const;
  /// Null in an index without traits, and past the end.
  std::optional<IndexTraits> traits(std::uint32_t document) const;
  /// The language that most pages state, an isLanguageTag(); empty if none does or in an index
  /// without traits.
  std::string_view statedLanguage() const;
  /// Signs of program code in texts, as terms of their own; empty in an index without them.
  const TermDictionary& operators() const { return operatorTable().operators(); }
  PostingCursor operatorPostings(const TermEntry& entry) const;

  std::optional<std::string> url(std::uint32_t document) const;
  std::optional<Dictionary> properties(std::uint32_t document) const;
  /// Returns one property; empty if there is none.
  std::string_view property(std::uint32_t document, std::string_view key) const;
  /// Visits the property `key` of each document that has it, in document order.
  void forEachProperty(
      std::string_view key,
      const std::function<void(std::uint32_t document, std::string_view value)>& visit) const;
  /// Returns the document with this documentIdentity().
  std::optional<std::uint32_t> find(const std::string& identity) const;

  PostingCursor postings(const TermEntry& entry) const;
  /// Returns the terms of a document in text order, noTerm for one or more words left out.
  std::vector<std::uint32_t> occurrences(std::uint32_t document) const;
  static constexpr std::uint32_t noTerm = UINT32_MAX;
  /// The same in stored form, for readCode(): faster when looking for few terms in much text.
  std::string_view occurrenceCodes(std::uint32_t document) const;
  /// Returns the occurrence code of a term; 0 if the index lacks the term.
  std::uint32_t occurrenceCode(std::uint32_t term) const;
  /// Returns the distinct terms of a document, ascending. The first call inverts all postings and
  /// so costs four bytes per posting for the life of the reader.
  std::span<const std::uint32_t> termsOf(std::uint32_t document) const;

 private:
  struct Properties {
    std::vector<std::string_view> keys;
    BlockTable entries;
  };
  struct DocumentTerms {
    std::vector<std::uint64_t> begins;  ///< of each document, and the end
    std::vector<std::uint32_t> terms;
  };
  struct NameAtPlace {
    std::uint32_t place;
    std::uint32_t name;  ///< its number in the table
  };
  struct NamesByDocument {
    std::vector<std::uint32_t> begins;  ///< of each document, and the end
    std::vector<NameAtPlace> names;
  };
  struct Section {
    Once once;
    std::string_view bytes;
  };

  IndexReader(const Data& data, const SectionTable& table) : _data(data), _table(table) {}

  std::string_view section(IndexSection kind) const;
  const BlockTable& urls() const;
  const TraitTable& traitTable() const;
  const OperatorTable& operatorTable() const;
  PostingCursor postings(const TermEntry& entry, std::string_view postings,
                         std::string_view frequencies) const;
  const Properties& storedProperties() const;
  /// The term of each occurrence code, from 1 on.
  const std::vector<std::uint32_t>& termsByCode() const;
  DocumentTerms invertPostings() const;
  NamesByDocument invertNames() const;
  /// Moves to the properties of a document; returns their number plus 1, or 0 if there are none.
  std::uint64_t seekProperties(std::uint32_t document, ByteReader& reader) const;

  Data _data;
  SectionTable _table;
  mutable std::array<Section, indexSectionCount> _sections;
  mutable Once _descriptionOnce, _documentsOnce, _termsOnce, _urlsOnce, _propertiesOnce, _codesOnce,
      _codesByTermOnce, _idsOnce, _documentTermsOnce, _placesOnce, _namesOnce, _namesByDocumentOnce,
      _traitsOnce, _operatorsOnce;
  mutable IndexDescription _description;
  mutable DocumentTable _documents;
  mutable TermDictionary _terms;
  mutable BlockTable _urls;
  mutable Properties _properties;
  mutable std::vector<std::uint32_t> _termsByCode;
  mutable std::vector<std::uint32_t> _codesByTerm;
  mutable std::unordered_map<std::string, std::uint32_t> _ids;
  mutable DocumentTerms _documentTerms;
  mutable PlaceTable _places;
  mutable NameTable _names;
  mutable NamesByDocument _namesByDocument;
  mutable TraitTable _traits;
  mutable OperatorTable _operators;
};

}  // namespace quorvex
