#include "fulltext/format/title_table.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "fulltext/format/index_format.h"
#include "text/term_table.h"

namespace quorvex {

namespace {

constexpr std::size_t lengthSize = 4;

/// Turns titles into term numbers. The parts between spaces, which no word crosses, are cached: in
/// a large book most of them occur in hundreds of titles, and a look-up takes a fraction of the
/// time of finding and folding the words.
class TitleReader {
 public:
  TitleReader(const WordFilter& filter, Tokenizer& tokenizer)
      : _filter(filter), _tokenizer(tokenizer) {}

  const TermTable& terms() const { return _terms; }

  /// `title` must outlive this object.
  void append(std::string_view title, std::vector<std::uint32_t>& words) {
    const std::size_t begin = words.size();
    const auto add = [&](std::uint32_t word) {
      // As in texts, adjacent words that are left out become one gap.
      const bool isBehindGap = words.size() > begin && words.back() == TitleTable::gap;
      if (word != TitleTable::gap || !isBehindGap) words.push_back(word);
    };
    for (std::size_t position = 0; position < title.size();) {
      const std::size_t end = std::min(title.find(' ', position), title.size());
      const Part& part = partFor(title.substr(position, end - position));
      std::for_each(_words.begin() + part.begin, _words.begin() + part.end, add);
      position = end + 1;
    }
  }

 private:
  /// A part of a title and the range of its words. A part evicts another one in the same slot.
  struct Part {
    std::string_view text;
    std::ptrdiff_t begin = 0;
    std::ptrdiff_t end = 0;
  };

  const Part& partFor(std::string_view text) {
    Part& part = _parts[std::hash<std::string_view>()(text) % _parts.size()];
    if (part.text == text) return part;
    part = {text, static_cast<std::ptrdiff_t>(_words.size()), 0};
    _tokenizer.reset(text);
    for (Token token; _tokenizer.next(token);) {
      _words.push_back(_filter.leavesOut(token.term) ? TitleTable::gap : _terms.insert(token.term));
    }
    part.end = static_cast<std::ptrdiff_t>(_words.size());
    return part;
  }

  const WordFilter& _filter;
  Tokenizer& _tokenizer;
  TermTable _terms;
  std::vector<Part> _parts = std::vector<Part>(4096);
  std::vector<std::uint32_t> _words;  ///< of all parts
};

/// The words of all titles, as numbers of the terms in byte order.
struct TitleWords {
  std::vector<std::string_view> terms;
  std::vector<std::uint32_t> words;
  std::vector<std::uint32_t> lengths;  ///< of each document
};

TitleWords readTitles(std::span<const std::string_view> titles, const TitleAffix& shared,
                      TitleReader& reader) {
  TitleWords read;
  for (const std::string_view title : titles) {
    const std::size_t begin = read.words.size();
    reader.append(shared.cut(title), read.words);
    read.lengths.push_back(static_cast<std::uint32_t>(read.words.size() - begin));
  }
  const TermTable& table = reader.terms();
  std::vector<std::uint32_t> order(table.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::sort(order, {}, [&](std::uint32_t number) { return table.term(number); });
  std::vector<std::uint32_t> rankOf(order.size());
  for (std::uint32_t rank = 0; rank < order.size(); ++rank) {
    rankOf[order[rank]] = rank;
    read.terms.push_back(table.term(order[rank]));
  }
  for (std::uint32_t& word : read.words) {
    if (word != TitleTable::gap) word = rankOf[word];
  }
  return read;
}

/// Appends the posting lists of all terms to `postings`; returns their dictionary.
std::string invert(const TitleWords& titles, std::string& postings) {
  std::vector<std::vector<TitleTable::Posting>> lists(titles.terms.size());
  auto word = titles.words.begin();
  for (std::uint32_t document = 0; document < titles.lengths.size(); ++document) {
    for (std::uint32_t left = titles.lengths[document]; left > 0; --left, ++word) {
      if (*word == TitleTable::gap) continue;
      std::vector<TitleTable::Posting>& list = lists[*word];
      if (list.empty() || list.back().document != document) list.push_back({document, 0});
      ++list.back().count;
    }
  }
  TermDictionaryBuilder dictionary(false);
  for (std::size_t term = 0; term < lists.size(); ++term) {
    const std::size_t begin = postings.size();
    std::uint32_t expected = 0;
    for (const auto& [document, count] : lists[term]) {
      appendVarint(postings, document - expected);
      appendVarint(postings, count);
      expected = document + 1;
    }
    dictionary.add(titles.terms[term], static_cast<std::uint32_t>(lists[term].size()),
                   postings.size() - begin);
  }
  return dictionary.take();
}

}  // namespace

TitleTable::TitleTable(const LazyBytes& section, std::uint32_t documentCount) {
  LazyReader reader(section);
  const std::optional<TitleAffix> shared = TitleAffix::decode(reader.text().all());
  const LazyBytes terms = reader.text();
  const LazyBytes postings = reader.text();
  const LazyBytes lengths = reader.bytes(std::uint64_t{documentCount} * lengthSize);
  if (!reader.ok() || !shared || documentCount == 0) return;
  _shared = *shared;
  _terms = TermDictionary(terms);
  _postings = postings;
  _words = BlockTable(reader.rest(), documentCount, documentsPerBlock);
  std::uint64_t sum = 0;
  ByteReader length(lengths.all());
  while (!length.rest().empty())
    sum += _lengths.emplace_back(length.u32());
  _averageLength = static_cast<float>(sum) / static_cast<float>(documentCount);
}

std::vector<TitleTable::Posting> TitleTable::postings(const TermEntry& term) const {
  std::vector<Posting> postings;
  ByteReader reader(_postings.part(term.postingsOffset, term.postingsSize));
  std::uint64_t document = 0;
  for (std::uint32_t left = term.documentCount; left > 0; --left, ++document) {
    document += reader.varint32();
    const std::uint32_t count = reader.varint32();
    if (!reader.ok() || document >= _lengths.size()) break;
    postings.push_back({static_cast<std::uint32_t>(document), count});
  }
  return postings;
}

std::vector<std::uint32_t> TitleTable::words(std::uint32_t document) const {
  if (document >= _lengths.size()) return {};
  const std::uint32_t first = document - document % documentsPerBlock;
  ByteReader reader(_words.block(document / documentsPerBlock));
  for (std::uint32_t before = first; before < document; ++before) {
    for (std::uint32_t left = _lengths[before]; left > 0 && reader.ok(); --left)
      reader.varint();
  }
  std::vector<std::uint32_t> words;
  for (std::uint32_t left = _lengths[document]; left > 0; --left) {
    const std::uint32_t word = reader.varint32();
    if (!reader.ok() || word > _terms.size()) break;
    words.push_back(word == 0 ? gap : word - 1);
  }
  return words;
}

std::string encodeTitles(std::span<const std::string_view> titles, const WordFilter& filter,
                         Tokenizer& tokenizer) {
  const TitleAffix shared(titles);
  TitleReader reader(filter, tokenizer);
  const TitleWords read = readTitles(titles, shared, reader);
  std::string postings;
  const std::string dictionary = invert(read, postings);
  BlockTableBuilder words;
  auto word = read.words.begin();
  for (std::size_t document = 0; document < titles.size(); ++document) {
    if (document % documentsPerBlock == 0) words.startBlock();
    for (std::uint32_t left = read.lengths[document]; left > 0; --left, ++word)
      appendVarint(words.entries(), *word == TitleTable::gap ? 0 : std::uint64_t{*word} + 1);
  }
  std::string section;
  appendText(section, shared.encode());
  appendText(section, dictionary);
  appendText(section, postings);
  for (const std::uint32_t length : read.lengths)
    appendFixed(section, length, lengthSize);
  return section + words.take();
}

}  // namespace quorvex
