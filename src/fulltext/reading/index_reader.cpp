#include "fulltext/reading/index_reader.h"

#include <algorithm>
#include <numeric>

#include "common/bytes.h"
#include "fulltext/document.h"
#include "fulltext/reading/first_version.h"

namespace quorvex {

PostingCursor::PostingCursor(std::string_view postings, std::string_view frequencies,
                             std::uint32_t documentCount)
    : _postings(postings), _frequencies(frequencies), _documentCount(documentCount) {}

bool PostingCursor::next() {
  if (_postings.empty() || _frequencies.empty()) return false;
  ByteReader reader(_postings);
  const std::uint64_t gap = reader.varint();
  if (!reader.ok() || gap >= _documentCount || _expected + gap >= _documentCount) {
    _postings = {};
    return false;
  }
  _postings = reader.rest();
  _document = static_cast<std::uint32_t>(_expected + gap);
  _expected = std::uint64_t{_document} + 1;
  _frequency = static_cast<unsigned char>(_frequencies.front());
  _frequencies.remove_prefix(1);
  return true;
}

std::shared_ptr<const IndexReader> IndexReader::open(const Data& data) {
  if (containerVersion(data.lazyBytes(), indexMagic) == 1) {
    const std::optional<Data> upgraded = upgradeFirstVersion(data);
    return upgraded ? open(*upgraded) : nullptr;
  }
  std::optional<SectionContainer> sections =
      SectionContainer::open(data.lazyBytes(), indexContainer);
  if (!sections) return nullptr;
  return std::shared_ptr<const IndexReader>(new IndexReader(data, *std::move(sections)));
}

LazyBytes IndexReader::section(IndexSection kind) const {
  return _sections.section(static_cast<std::uint32_t>(kind));
}

const IndexDescription& IndexReader::description() const {
  _descriptionOnce.run(
      [&] { _description = decodeAnalysis(section(IndexSection::analysis).all()); });
  return _description;
}

const DocumentTable& IndexReader::documents() const {
  _documentsOnce.run([&] { _documents = DocumentTable(section(IndexSection::documents)); });
  return _documents;
}

const TermDictionary& IndexReader::terms() const {
  _termsOnce.run([&] { _terms = TermDictionary(section(IndexSection::terms)); });
  return _terms;
}

const PlaceTable& IndexReader::places() const {
  _placesOnce.run([&] { _places = PlaceTable(section(IndexSection::places), documents().size()); });
  return _places;
}

const NameTable& IndexReader::names() const {
  _namesOnce.run([&] { _names = NameTable(section(IndexSection::names)); });
  return _names;
}

std::vector<NameAtPlace> IndexReader::namesOf(std::uint32_t document) const {
  _placeNamesOnce.run(
      [&] { _placeNames = PlaceNames(section(IndexSection::placeNames), documents().size()); });
  return document < documents().size() ? _placeNames.of(document) : std::vector<NameAtPlace>();
}

std::string IndexReader::name(std::uint32_t number) const {
  NameTable::Cursor name(names());
  return name.moveTo(number) ? name.entry().name : std::string();
}

const TitleTable& IndexReader::titles() const {
  _titlesOnce.run([&] { _titles = TitleTable(section(IndexSection::titles), documents().size()); });
  return _titles;
}

const JoinedTermTable& IndexReader::joinedTerms() const {
  _joinedTermsOnce.run([&] {
    _joinedTerms = JoinedTermTable(section(IndexSection::joinedTerms), terms().groupCount(),
                                   titles().terms().groupCount());
  });
  return _joinedTerms;
}

const TraitTable& IndexReader::traitTable() const {
  _traitsOnce.run([&] { _traits = TraitTable(section(IndexSection::traits), documents().size()); });
  return _traits;
}

std::optional<IndexTraits> IndexReader::traits(std::uint32_t document) const {
  return traitTable().traits(document);
}

std::string_view IndexReader::statedLanguage() const {
  return traitTable().language();
}

const OperatorTable& IndexReader::operatorTable() const {
  _operatorsOnce.run([&] { _operators = OperatorTable(section(IndexSection::operators)); });
  return _operators;
}

const BlockTable& IndexReader::urls() const {
  _urlsOnce.run([&] {
    _urls = BlockTable(section(IndexSection::urls), documents().size(), documentsPerBlock);
  });
  return _urls;
}

const PropertyTable& IndexReader::propertyTable() const {
  _propertiesOnce.run(
      [&] { _properties = PropertyTable(section(IndexSection::properties), documents().size()); });
  return _properties;
}

std::optional<std::string> IndexReader::url(std::uint32_t document) const {
  if (document >= documents().size()) return std::nullopt;
  ByteReader reader(urls().block(document / documentsPerBlock));
  std::string url;
  for (std::uint32_t left = document % documentsPerBlock + 1; left > 0; --left) {
    const std::uint64_t shared = reader.varint();
    const std::string_view suffix = reader.text();
    if (!reader.ok() || shared > std::min(url.size(), largestSharedPrefix)) return std::nullopt;
    url.resize(shared);
    url += suffix;
  }
  return url;
}

std::optional<std::uint32_t> IndexReader::find(const std::string& identity) const {
  _idsOnce.run([&] {
    const DocumentTable& table = documents();
    for (std::uint32_t id = 0; id < table.size(); ++id) {
      const std::uint32_t parent = table.parent(id);
      const std::optional<std::string> text = url(id);
      if (!text) continue;
      _ids.emplace(documentIdentity(
                       parent == DocumentTable::none ? std::nullopt : std::optional(parent), *text),
                   id);
    }
  });
  const auto found = _ids.find(identity);
  return found == _ids.end() ? std::nullopt : std::optional(found->second);
}

PostingCursor IndexReader::postings(const TermEntry& entry) const {
  return postings(entry, section(IndexSection::postings), section(IndexSection::frequencies));
}

PostingCursor IndexReader::operatorPostings(const TermEntry& entry) const {
  return postings(entry, operatorTable().postings(), operatorTable().frequencies());
}

PostingCursor IndexReader::postings(const TermEntry& entry, const LazyBytes& postings,
                                    const LazyBytes& frequencies) const {
  if (entry.postingsOffset > postings.size() || entry.firstPosting > frequencies.size()) {
    return {{}, {}, 0};
  }
  return {postings.part(entry.postingsOffset, entry.postingsSize),
          frequencies.part(entry.firstPosting, entry.documentCount), documents().size()};
}

const std::vector<std::uint32_t>& IndexReader::termsByCode() const {
  _codesOnce.run([&] {
    const std::uint32_t documentCount = documents().size();
    std::vector<std::uint32_t> counts;
    TermDictionary::Cursor cursor(terms(), 0);
    while (cursor.next()) {
      if (cursor.entry().documentCount > documentCount) return;
      counts.push_back(cursor.entry().documentCount);
    }
    // Codes are known only if the whole dictionary is.
    if (counts.size() == terms().size()) _termsByCode = termsByDocumentCount(counts, documentCount);
  });
  return _termsByCode;
}

std::string_view IndexReader::occurrenceCodes(std::uint32_t document) const {
  if (document >= documents().size()) return {};
  const std::uint64_t begin = documents().codesBegin(document);
  const std::uint64_t end = documents().codesEnd(document);
  if (begin > end) return {};
  return section(IndexSection::occurrences).part(begin, end - begin);
}

std::uint32_t IndexReader::occurrenceCode(const TermEntry& term) const {
  _codeTableOnce.run([&] { _codeTable = CodeTable(section(IndexSection::codes)); });
  return _codeTable.code(term, terms());
}

std::vector<std::uint32_t> IndexReader::occurrences(std::uint32_t document) const {
  const std::string_view codes = occurrenceCodes(document);
  const std::vector<std::uint32_t>& termOf = termsByCode();
  std::vector<std::uint32_t> found;
  found.reserve(codes.size());
  const char* const end = codes.data() + codes.size();
  for (const char* position = codes.data(); position != end;) {
    const std::uint32_t code = readCode(position, end);
    if (code > termOf.size()) return {};
    found.push_back(code == 0 ? noTerm : termOf[code - 1]);
  }
  return found;
}

/// Visits terms in ascending order, so the lists of the documents ascend too.
IndexReader::DocumentTerms IndexReader::invertPostings() const {
  DocumentTerms inverted;
  std::vector<std::uint64_t>& begins = inverted.begins;
  begins.assign(std::size_t{documents().size()} + 2, 0);
  std::uint64_t total = 0;
  for (TermDictionary::Cursor cursor(terms(), 0); cursor.next();) {
    // Overlapping postings would be counted once per term.
    if (cursor.entry().firstPosting != total) return {};
    PostingCursor posting = postings(cursor.entry());
    for (; posting.next(); ++total)
      ++begins[posting.document() + 2];
    if (total != cursor.entry().firstPosting + cursor.entry().documentCount) return {};
  }
  std::partial_sum(begins.begin(), begins.end(), begins.begin());
  inverted.terms.resize(total);
  // Counts are stored two places ahead: filling moves begins[d + 1] from the begin of d to its end.
  for (TermDictionary::Cursor cursor(terms(), 0); cursor.next();) {
    PostingCursor posting = postings(cursor.entry());
    while (posting.next())
      inverted.terms[begins[posting.document() + 1]++] = cursor.id();
  }
  return inverted;
}

std::span<const std::uint32_t> IndexReader::termsOf(std::uint32_t document) const {
  _documentTermsOnce.run([&] { _documentTerms = invertPostings(); });
  const std::vector<std::uint64_t>& begins = _documentTerms.begins;
  if (document >= documents().size() || begins.empty()) return {};
  return std::span(_documentTerms.terms)
      .subspan(begins[document], begins[document + 1] - begins[document]);
}

}  // namespace quorvex
