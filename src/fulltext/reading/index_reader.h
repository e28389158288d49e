#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/lazy_bytes.h"
#include "common/once.h"
#include "common/section_container.h"
#include "common/value.h"
#include "fulltext/format/analysis_section.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/code_table.h"
#include "fulltext/format/document_table.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/joined_terms.h"
#include "fulltext/format/name_table.h"
#include "fulltext/format/operator_table.h"
#include "fulltext/format/place_names.h"
#include "fulltext/format/place_table.h"
#include "fulltext/format/property_table.h"
#include "fulltext/format/title_table.h"
#include "fulltext/format/trait_table.h"
#include "text/term_dictionary.h"

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

  const IndexDescription& description() const;
  const DocumentTable& documents() const;
  const TermDictionary& terms() const;

  // Empty in an index without these sections.
  const PlaceTable& places() const;
  const NameTable& names() const;
  /// Returns the numbers of the names that the places of a document do not store.
  std::vector<NameAtPlace> namesOf(std::uint32_t document) const;
  /// Returns the name with a number; empty if there is none.
  std::string name(std::uint32_t number) const;
  const TitleTable& titles() const;
  const JoinedTermTable& joinedTerms() const;
  /// Null in an index without traits, and past the end.
  std::optional<IndexTraits> traits(std::uint32_t document) const;
  /// The language that most pages state, an isLanguageTag(); empty if none does or in an index
  /// without traits.
  std::string_view statedLanguage() const;
  /// Returns the link shares of all documents; none in an index without traits.
  std::string_view linkShares() const { return traitTable().linkShares(); }
  /// Signs of program code in texts, as terms of their own; empty in an index without them.
  const TermDictionary& operators() const { return operatorTable().operators(); }
  PostingCursor operatorPostings(const TermEntry& entry) const;

  std::optional<std::string> url(std::uint32_t document) const;
  std::optional<Dictionary> properties(std::uint32_t document) const {
    return propertyTable().properties(document);
  }
  /// Returns one property; empty if there is none.
  std::string_view property(std::uint32_t document, std::string_view key) const {
    return propertyTable().property(document, key);
  }
  /// Returns the document with this documentIdentity().
  std::optional<std::uint32_t> find(const std::string& identity) const;

  PostingCursor postings(const TermEntry& entry) const;
  /// Returns the terms of a document in text order, noTerm for one or more words left out.
  std::vector<std::uint32_t> occurrences(std::uint32_t document) const;
  static constexpr std::uint32_t noTerm = UINT32_MAX;
  /// The same in stored form, for readCode(): faster when looking for few terms in much text.
  std::string_view occurrenceCodes(std::uint32_t document) const;
  /// Returns the occurrence code of a term; 0 if it has none.
  std::uint32_t occurrenceCode(const TermEntry& term) const;
  /// Returns the distinct terms of a document, ascending. The first call inverts all postings and
  /// so costs four bytes per posting for the life of the reader.
  std::span<const std::uint32_t> termsOf(std::uint32_t document) const;

 private:
  struct DocumentTerms {
    std::vector<std::uint64_t> begins;  ///< of each document, and the end
    std::vector<std::uint32_t> terms;
  };
  IndexReader(Data data, SectionContainer sections)
      : _data(std::move(data)), _sections(std::move(sections)) {}

  LazyBytes section(IndexSection kind) const;
  const BlockTable& urls() const;
  const TraitTable& traitTable() const;
  const OperatorTable& operatorTable() const;
  PostingCursor postings(const TermEntry& entry, const LazyBytes& postings,
                         const LazyBytes& frequencies) const;
  const PropertyTable& propertyTable() const;
  /// The term of each occurrence code, from 1 on.
  const std::vector<std::uint32_t>& termsByCode() const;
  DocumentTerms invertPostings() const;

  Data _data;
  SectionContainer _sections;
  mutable Once _descriptionOnce, _documentsOnce, _termsOnce, _urlsOnce, _propertiesOnce, _codesOnce,
      _codeTableOnce, _idsOnce, _documentTermsOnce, _placesOnce, _namesOnce, _placeNamesOnce,
      _traitsOnce, _operatorsOnce, _titlesOnce, _joinedTermsOnce;
  mutable IndexDescription _description;
  mutable DocumentTable _documents;
  mutable TermDictionary _terms;
  mutable BlockTable _urls;
  mutable PropertyTable _properties;
  mutable std::vector<std::uint32_t> _termsByCode;
  mutable CodeTable _codeTable;
  mutable std::unordered_map<std::string, std::uint32_t> _ids;
  mutable DocumentTerms _documentTerms;
  mutable PlaceTable _places;
  mutable NameTable _names;
  mutable PlaceNames _placeNames;
  mutable TraitTable _traits;
  mutable OperatorTable _operators;
  mutable TitleTable _titles;
  mutable JoinedTermTable _joinedTerms;
};

}  // namespace quorvex
