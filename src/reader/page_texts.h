#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "common/value.h"
#include "reader/book.h"
#include "reader/page_text.h"

namespace quorvex::reader {

/// The texts of a book's pages, for quoting them. Keeps the last ones: whoever types a question
/// gets the same pages at every key, and parsing them takes most of the time of an answer.
/// Thread-safe.
class PageTexts {
 public:
  explicit PageTexts(std::shared_ptr<const Book> book) : _book(std::move(book)) {}

  /// A page as it is when it is asked for. Its file is read only for texts that are not kept. Lives
  /// no longer than the PageTexts; serves one thread.
  class Page {
   public:
    /// In bytes, of the file.
    std::size_t size() const { return _version.size; }
    /// Null if the page cannot be read any more.
    std::shared_ptr<const PageText> whole();
    /// Of the part with about `size` bytes that begins with a fragment's element; without a
    /// fragment, of the page's beginning. Null if the page cannot be read any more.
    std::shared_ptr<const PageText> part(std::string_view fragment, std::size_t size);

   private:
    friend class PageTexts;
    Page(const PageTexts& texts, std::string_view path, const PageVersion& version)
        : _texts(texts), _path(path), _version(version) {}

    template <typename Parse>
    std::shared_ptr<const PageText> text(std::string_view fragment, std::size_t size,
                                         const Parse& parse);

    const PageTexts& _texts;
    std::string _path;
    PageVersion _version;
    std::optional<Data> _html;
  };

  /// Null if there is no such page, or none of up to `mostBytes`.
  std::optional<Page> page(std::string_view path, std::size_t mostBytes) const;

 private:
  struct Kept {
    std::string key;
    PageVersion version;
    std::shared_ptr<const PageText> text;
  };

  std::shared_ptr<const PageText> find(std::string_view key, const PageVersion& version) const;
  void keep(Kept kept) const;

  std::shared_ptr<const Book> _book;
  mutable std::mutex _mutex;
  mutable std::list<Kept> _kept;  ///< the last one used first
  mutable std::size_t _bytes = 0;
};

}  // namespace quorvex::reader
