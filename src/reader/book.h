#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex::reader {

/// Tells the bytes that a page has from those that it had.
struct PageVersion {
  std::size_t size = 0;  ///< in bytes
  std::uint64_t device = 0;
  std::uint64_t file = 0;
  std::int64_t written = 0;  ///< in nanoseconds
  std::int64_t changed = 0;

  friend bool operator==(const PageVersion&, const PageVersion&) = default;
};

/// The pages of the book that an index was made from. Thread-safe.
class Book {
 public:
  /// `path`: a folder of pages or a description file. A folder stays the one it is now, even if
  /// another one takes its place.
  static Result<std::shared_ptr<const Book>> open(const std::string& path);

  Book() = default;
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;
  virtual ~Book() = default;

  /// Looks a page up by its path in the index, without reading it; null if there is no such page,
  /// or none that is a regular file of the book's folder.
  virtual std::optional<PageVersion> version(std::string_view path) const = 0;
  /// Returns the bytes of such a page; null, too, for one above the limit for pages or `mostBytes`.
  virtual std::optional<Data> page(std::string_view path, std::size_t mostBytes) const = 0;
};

}  // namespace quorvex::reader
