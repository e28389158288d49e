#include "semantic/reading/index_reader.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace quorvex::docuvault {

SemanticIndexReader::SemanticIndexReader(SectionContainer sections, IndexInfo info)
    : _sections(std::move(sections)), _info(std::move(info)) {}

std::shared_ptr<const SemanticIndexReader> SemanticIndexReader::open(const LazyBytes& bytes) {
  std::optional<SectionContainer> sections = SectionContainer::open(bytes, indexContainer);
  if (!sections) return nullptr;
  std::optional<IndexInfo> info =
      readInfo(sections->section(static_cast<std::uint32_t>(Section::info)).all());
  if (!info) return nullptr;
  const std::shared_ptr<SemanticIndexReader> reader(
      new SemanticIndexReader(*std::move(sections), *std::move(info)));
  return reader->hasFittingSizes() ? reader : nullptr;
}

LazyBytes SemanticIndexReader::section(Section kind) const {
  return _sections.section(static_cast<std::uint32_t>(kind));
}

const ArticleTable& SemanticIndexReader::articleTable() const {
  _articlesOnce.run([this] {
    _articles = ArticleTable(_info.articles, section(Section::excluded), section(Section::names),
                             section(Section::details));
  });
  return _articles;
}

bool SemanticIndexReader::hasFittingSizes() const {
  const auto sizeOf = [&](Section kind) -> std::uint64_t {
    return _sections.sizeOf(static_cast<std::uint32_t>(kind));
  };
  const std::uint64_t ends = ArticleTable::endsSize(_info.articles);
  return sizeOf(Section::names) >= ends && sizeOf(Section::details) >= ends &&
         sizeOf(Section::scales) == _info.scales() * 4 &&
         sizeOf(Section::vectors) == std::uint64_t{_info.articles} * _info.dimensions &&
         sizeOf(Section::counts) == _info.postings / 2 + _info.postings % 2;
}

float SemanticIndexReader::scaleAt(std::string_view part, std::size_t index) {
  if (part.size() < (index + 1) * 4) return 0;
  std::uint32_t bits = 0;
  std::memcpy(&bits, part.data() + index * 4, 4);
  if constexpr (std::endian::native == std::endian::big) bits = __builtin_bswap32(bits);
  const float scale = std::bit_cast<float>(bits);
  return std::isfinite(scale) ? scale : 0;
}

float SemanticIndexReader::inverseEnergy(std::uint32_t dimension) const {
  return scaleAt(
      section(Section::scales).part((std::size_t{_info.articles} * 2 + dimension) * 4, 4), 0);
}

const TermDictionary& SemanticIndexReader::terms() const {
  _termsOnce.run([this] { _terms = TermDictionary(section(Section::terms)); });
  return _terms;
}

IndexedTerm SemanticIndexReader::indexedTerm(const TermEntry& entry, const LazyBytes& postings,
                                             const LazyBytes& counts) {
  IndexedTerm term;
  term.globalWeight = static_cast<float>(entry.extra) / 255.0F;
  term.articles = entry.documentCount;
  term.postings = postings.part(entry.postingsOffset, entry.postingsSize);
  const std::uint64_t begin = entry.firstPosting / 2;
  const std::uint64_t end = (entry.firstPosting + entry.documentCount + 1) / 2;
  term.counts = counts.part(begin, end - begin);
  term.startsInHighHalf = entry.firstPosting % 2 != 0;
  return term;
}

std::optional<IndexedTerm> SemanticIndexReader::find(std::string_view term) const {
  const std::optional<TermEntry> entry = terms().find(term);
  if (!entry) return std::nullopt;
  return indexedTerm(*entry, section(Section::postings), section(Section::counts));
}

void SemanticIndexReader::forEachTerm(const std::function<void(const IndexedTerm&)>& visit) const {
  // Unpacked once for all terms.
  const LazyBytes postings = section(Section::postings).all();
  const LazyBytes counts = section(Section::counts).all();
  for (TermDictionary::Cursor cursor(terms(), 0); cursor.next();)
    visit(indexedTerm(cursor.entry(), postings, counts));
}

}  // namespace quorvex::docuvault
