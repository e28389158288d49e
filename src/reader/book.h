#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex::reader {

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

  /// Returns the bytes of a page by its path in the index; null if there is no such page, or none
  /// that is a regular file of the book's folder within the limit for pages and of up to
  /// `mostBytes`.
  virtual std::optional<Data> page(std::string_view path, std::size_t mostBytes) const = 0;
};

}  // namespace quorvex::reader
