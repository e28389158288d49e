#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "common/lazy_bytes.h"
#include "semantic/format/article_record.h"
#include "semantic/format/index_format.h"

namespace quorvex::docuvault {

inline constexpr std::uint32_t articlesPerBlock = 16;
/// A sub-path shares at most this many bytes with the previous one, so that a small index cannot
/// contain many long ones.
inline constexpr std::size_t largestSharedPrefix = 255;

/// Makes the sections of an index that describe its articles.
class ArticleTableBuilder {
 public:
  void add(const ArticleRecord& record);
  std::uint32_t count() const { return _count; }
  std::uint32_t excludedCount() const { return _excludedCount; }
  /// Moves the sections to `sections`; false if one is too large.
  bool take(IndexSections& sections);

 private:
  struct Blocks {
    std::string ends;
    std::string entries;
    void finishBlock() { appendU32(ends, static_cast<std::uint32_t>(entries.size())); }
  };
  void finishBlocks();

  std::uint32_t _count = 0;
  std::uint32_t _excludedCount = 0;
  std::uint32_t _afterExcluded = 0;
  std::string _excluded;
  std::string _subPath;  ///< the last one
  Blocks _names;
  Blocks _details;
};

/// The articles of an index, read in place. A damaged block ends at the damage. Without names if
/// their blocks overlap, so that no small index claims many long ones.
class ArticleTable {
 public:
  ArticleTable() = default;
  ArticleTable(std::uint32_t count, const LazyBytes& excluded, const LazyBytes& names,
               const LazyBytes& details);

  /// Bytes that the ends of the blocks take.
  static std::uint64_t endsSize(std::uint32_t articles) {
    return (std::uint64_t{articles} + articlesPerBlock - 1) / articlesPerBlock * 4;
  }

  /// Visits the articles to leave out of answers, ascending.
  void forEachExcluded(const std::function<void(std::uint32_t article)>& visit) const;
  bool isExcluded(std::uint32_t article) const;
  /// Returns the sub-path, and the title if wanted.
  std::string subPath(std::uint32_t article, std::string* title = nullptr) const;
  /// Returns the first article with a sub-path.
  std::optional<std::uint32_t> find(std::string_view subPath) const;
  ArticleRecord record(std::uint32_t article) const;

 private:
  std::string_view block(const LazyBytes& section, std::uint32_t number) const;

  std::uint32_t _count = 0;
  LazyBytes _excluded;
  LazyBytes _names;
  LazyBytes _details;
};

}  // namespace quorvex::docuvault
