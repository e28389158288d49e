#include "semantic/format/article_table.h"

#include <algorithm>
#include <utility>

namespace quorvex::docuvault {

namespace {

/// Moves from one name of a block to the next. `subPath` is kept between calls. False at the end
/// of the block.
bool readName(ByteReader& block, std::string& subPath, std::string_view& title) {
  const std::uint64_t shared = block.varint();
  const std::string_view rest = block.text();
  title = block.text();
  if (!block.ok() || shared > std::min(subPath.size(), largestSharedPrefix)) return false;
  subPath.resize(shared);
  subPath += rest;
  return true;
}

void readDetails(ByteReader& block, ArticleRecord& record) {
  record.keywords.clear();
  record.actions.clear();
  record.description = block.text();
  for (std::uint64_t left = readCount(block); left > 0 && block.ok(); --left) {
    record.keywords.emplace_back(block.text());
  }
  for (std::uint64_t left = readCount(block); left > 0 && block.ok(); --left) {
    std::string name(block.text());
    record.actions.push_back({std::move(name), std::string(block.text())});
  }
}

}  // namespace

void ArticleTableBuilder::add(const ArticleRecord& record) {
  if (_count % articlesPerBlock == 0) {
    if (_count > 0) finishBlocks();
    _subPath.clear();
  }
  if (record.excludedFromSearch) {
    appendVarint(_excluded, _count - _afterExcluded);
    _afterExcluded = _count + 1;
    ++_excludedCount;
  }
  const std::size_t shared =
      std::min(sharedPrefixSize(_subPath, record.subPath), largestSharedPrefix);
  appendVarint(_names.entries, shared);
  appendText(_names.entries, std::string_view(record.subPath).substr(shared));
  appendText(_names.entries, record.title);
  _subPath = record.subPath;
  std::string& details = _details.entries;
  appendText(details, record.description);
  appendVarint(details, record.keywords.size());
  for (const std::string& keyword : record.keywords)
    appendText(details, keyword);
  appendVarint(details, record.actions.size());
  for (const ArticleRecord::Action& action : record.actions) {
    appendText(details, action.name);
    appendText(details, action.link);
  }
  ++_count;
}

void ArticleTableBuilder::finishBlocks() {
  _names.finishBlock();
  _details.finishBlock();
}

bool ArticleTableBuilder::take(IndexSections& sections) {
  if (_count > 0) finishBlocks();
  if (std::max(_names.entries.size(), _details.entries.size()) > UINT32_MAX) return false;
  sections[Section::excluded] = std::move(_excluded);
  sections[Section::names] = std::move(_names.ends) + std::move(_names.entries);
  sections[Section::details] = std::move(_details.ends) + std::move(_details.entries);
  return true;
}

ArticleTable::ArticleTable(std::uint32_t count, const LazyBytes& excluded, const LazyBytes& names,
                           const LazyBytes& details)
    : _count(count), _excluded(excluded), _details(details) {
  std::uint32_t previous = 0;
  for (ByteReader ends(names.part(0, endsSize(count))); !ends.rest().empty();) {
    const std::uint32_t end = ends.u32();
    if (end < previous) return;
    previous = end;
  }
  _names = names;
}

void ArticleTable::forEachExcluded(const std::function<void(std::uint32_t article)>& visit) const {
  std::uint64_t article = 0;
  for (ByteReader reader(_excluded.all()); !reader.rest().empty(); ++article) {
    const std::uint64_t skipped = reader.varint();
    if (!reader.ok() || skipped >= _count - article) return;
    article += skipped;
    visit(static_cast<std::uint32_t>(article));
    if (article + 1 >= _count) return;
  }
}

bool ArticleTable::isExcluded(std::uint32_t article) const {
  bool found = false;
  forEachExcluded([&](std::uint32_t excluded) { found = found || excluded == article; });
  return found;
}

std::string_view ArticleTable::block(const LazyBytes& section, std::uint32_t number) const {
  const std::size_t at = std::size_t{number} * 4;
  ByteReader ends(number == 0 ? section.part(0, 4) : section.part(at - 4, 8));
  const std::size_t begin = number == 0 ? 0 : ends.u32();
  const std::size_t end = ends.u32();
  if (!ends.ok() || begin > end) return {};
  return section.part(endsSize(_count) + begin, end - begin);
}

std::string ArticleTable::subPath(std::uint32_t article, std::string* title) const {
  ByteReader names(block(_names, article / articlesPerBlock));
  std::string subPath;
  std::string_view text;
  for (std::uint32_t i = 0; i <= article % articlesPerBlock; ++i) {
    if (!readName(names, subPath, text)) return {};
  }
  if (title != nullptr) *title = text;
  return subPath;
}

std::optional<std::uint32_t> ArticleTable::find(std::string_view subPath) const {
  std::string candidate;
  std::string_view title;
  for (std::uint32_t first = 0; first < _count; first += articlesPerBlock) {
    const std::string_view bytes = block(_names, first / articlesPerBlock);
    if (bytes.empty()) return std::nullopt;
    ByteReader names(bytes);
    candidate.clear();
    for (std::uint32_t i = first; i < std::min(first + articlesPerBlock, _count); ++i) {
      if (!readName(names, candidate, title)) break;
      if (candidate == subPath) return i;
    }
  }
  return std::nullopt;
}

ArticleRecord ArticleTable::record(std::uint32_t article) const {
  ArticleRecord record;
  ByteReader details(block(_details, article / articlesPerBlock));
  for (std::uint32_t i = 0; i <= article % articlesPerBlock; ++i)
    readDetails(details, record);
  record.excludedFromSearch = isExcluded(article);
  record.subPath = subPath(article, &record.title);
  return record;
}

}  // namespace quorvex::docuvault
