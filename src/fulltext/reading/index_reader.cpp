#include "fulltext/reading/index_reader.h"

#include <algorithm>
#include <numeric>

#include "common/bytes.h"
#include "common/checksum.h"
#include "fulltext/document.h"

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
  const std::optional<SectionTable> table = parseIndex(data.bytes());
  if (!table) return nullptr;
  return std::shared_ptr<const IndexReader>(new IndexReader(data, *table));
}

std::string_view IndexReader::section(IndexSection kind) const {
  const std::size_t number = static_cast<std::size_t>(kind) - 1;
  Section& section = _sections[number];
  section.once.run([&] {
    const SectionView& stored = _table[number];
    if (checksum(stored.bytes) == stored.sum) section.bytes = stored.bytes;
  });
  return section.bytes;
}

void IndexReader::prepareForSearch() const {
  for (const IndexSection kind :
       {IndexSection::postings, IndexSection::frequencies, IndexSection::occurrences}) {
    section(kind);
  }
  occurrenceCode(0);
}

const IndexDescription& IndexReader::description() const {
  _descriptionOnce.run([&] { _description = decodeAnalysis(section(IndexSection::analysis)); });
  return _description;
}

const DocumentTable& IndexReader::documents() const {
  _documentsOnce.run([&] {
    const std::uint64_t occurrencesSize =
        _table[static_cast<std::size_t>(IndexSection::occurrences) - 1].bytes.size();
    _documents = DocumentTable(section(IndexSection::documents), occurrencesSize);
  });
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

IndexReader::NamesByDocument IndexReader::invertNames() const {
  NamesByDocument inverted;
  std::vector<std::uint32_t>& begins = inverted.begins;
  begins.assign(std::size_t{documents().size()} + 2, 0);
  std::vector<std::pair<std::uint32_t, NameAtPlace>> all;
  std::uint32_t number = 0;
  for (NameTable::Cursor name(names()); name.next(); ++number) {
    for (const NamePlace& at : name.entry().places) {
      if (at.document >= documents().size()) continue;
      all.push_back({at.document, {at.place, number}});
      ++begins[at.document + 2];
    }
  }
  std::partial_sum(begins.begin(), begins.end(), begins.begin());
  inverted.names.resize(all.size());
  // Counts are stored two places ahead: filling moves begins[d + 1] from the begin of d to its end.
  for (const auto& [document, name] : all)
    inverted.names[begins[document + 1]++] = name;
  return inverted;
}

std::string IndexReader::nameAt(const NamePlace& place) const {
  _namesByDocumentOnce.run([&] { _namesByDocument = invertNames(); });
  if (place.document >= documents().size()) return {};
  const std::vector<std::uint32_t>& begins = _namesByDocument.begins;
  const auto ofDocument =
      std::span(_namesByDocument.names)
          .subspan(begins[place.document], begins[place.document + 1] - begins[place.document]);
  const auto found = std::ranges::find(ofDocument, place.place, &NameAtPlace::place);
  if (found == ofDocument.end()) return {};
  NameTable::Cursor name(names());
  return name.moveTo(found->name) ? name.entry().name : std::string();
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

const IndexReader::Properties& IndexReader::storedProperties() const {
  _propertiesOnce.run([&] {
    ByteReader reader(section(IndexSection::properties));
    std::vector<std::string_view> keys;
    for (std::uint64_t left = reader.varint(); left > 0 && reader.ok(); --left) {
      keys.push_back(reader.text());
    }
    if (!reader.ok()) return;
    _properties = {std::move(keys),
                   BlockTable(reader.rest(), documents().size(), documentsPerBlock)};
  });
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

std::uint64_t IndexReader::seekProperties(std::uint32_t document, ByteReader& reader) const {
  if (document >= documents().size()) return 0;
  reader = ByteReader(storedProperties().entries.block(document / documentsPerBlock));
  for (std::uint32_t left = document % documentsPerBlock; left > 0 && reader.ok(); --left) {
    for (std::uint64_t entries = reader.varint(); entries > 1 && reader.ok(); --entries) {
      reader.varint();
      reader.text();
    }
  }
  const std::uint64_t entries = reader.varint();
  return reader.ok() ? entries : 0;
}

std::optional<Dictionary> IndexReader::properties(std::uint32_t document) const {
  ByteReader reader({});
  const std::uint64_t entries = seekProperties(document, reader);
  if (entries == 0) return std::nullopt;
  Dictionary properties;
  for (std::uint64_t left = entries - 1; left > 0; --left) {
    const std::uint64_t key = reader.varint();
    const std::string_view value = reader.text();
    if (!reader.ok() || key >= storedProperties().keys.size()) return std::nullopt;
    properties.insert_or_assign(std::string(storedProperties().keys[key]), value);
  }
  return properties;
}

std::string_view IndexReader::property(std::uint32_t document, std::string_view key) const {
  ByteReader reader({});
  for (std::uint64_t entries = seekProperties(document, reader); entries > 1; --entries) {
    const std::uint64_t found = reader.varint();
    const std::string_view value = reader.text();
    if (!reader.ok() || found >= storedProperties().keys.size()) return {};
    if (storedProperties().keys[found] == key) return value;
  }
  return {};
}

void IndexReader::forEachProperty(
    std::string_view key,
    const std::function<void(std::uint32_t document, std::string_view value)>& visit) const {
  const Properties& stored = storedProperties();
  const auto wanted =
      static_cast<std::uint64_t>(std::ranges::find(stored.keys, key) - stored.keys.begin());
  if (wanted == stored.keys.size()) return;
  ByteReader reader({});
  for (std::uint32_t document = 0; document < documents().size(); ++document) {
    if (document % documentsPerBlock == 0) {
      reader = ByteReader(stored.entries.block(document / documentsPerBlock));
    }
    for (std::uint64_t entries = reader.varint(); entries > 1 && reader.ok(); --entries) {
      const std::uint64_t found = reader.varint();
      const std::string_view value = reader.text();
      if (reader.ok() && found == wanted) visit(document, value);
    }
  }
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

PostingCursor IndexReader::postings(const TermEntry& entry, std::string_view postings,
                                    std::string_view frequencies) const {
  if (entry.postingsOffset > postings.size() || entry.firstPosting > frequencies.size()) {
    return {{}, {}, 0};
  }
  return {postings.substr(entry.postingsOffset, entry.postingsSize),
          frequencies.substr(entry.firstPosting, entry.documentCount), documents().size()};
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
  const std::string_view codes = section(IndexSection::occurrences);
  const std::uint64_t begin = documents().codesBegin(document);
  return begin > codes.size() ? std::string_view()
                              : codes.substr(begin, documents().codesEnd(document) - begin);
}

std::uint32_t IndexReader::occurrenceCode(std::uint32_t term) const {
  _codesByTermOnce.run([&] {
    const std::vector<std::uint32_t>& termOf = termsByCode();
    _codesByTerm.resize(termOf.size());
    for (std::uint32_t i = 0; i < termOf.size(); ++i)
      _codesByTerm[termOf[i]] = i + 1;
  });
  return term < _codesByTerm.size() ? _codesByTerm[term] : 0;
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
