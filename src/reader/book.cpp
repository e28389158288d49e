#include "reader/book.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "common/descriptor.h"
#include "common/files.h"
#include "common/keyed_document.h"
#include "common/open_below.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "extract/page_limits.h"
#include "extract/page_parser.h"
#include "reader/page_path.h"
#include "sources/indexable_help_book_description.h"

namespace quorvex::reader {

namespace {

constexpr int onlyLocate = O_PATH | O_CLOEXEC;
constexpr int toRead = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

class Folder final : public Book {
 public:
  explicit Folder(Descriptor folder) : _folder(std::move(folder)) {}

  std::optional<PageVersion> version(std::string_view path) const override {
    struct stat information {};
    // Merely opening a device can do harm.
    const Descriptor found = open(path, onlyLocate);
    if (!found || ::fstat(found.get(), &information) != 0 || !S_ISREG(information.st_mode)) {
      return std::nullopt;
    }
    return PageVersion{.size = static_cast<std::size_t>(information.st_size),
                       .device = information.st_dev,
                       .file = information.st_ino,
                       .written = nanoseconds(information.st_mtim),
                       .changed = nanoseconds(information.st_ctim)};
  }

  std::optional<Data> page(std::string_view path, std::size_t mostBytes) const override {
    if (!version(path)) return std::nullopt;
    const Descriptor file = open(path, toRead);
    if (!file) return std::nullopt;
    Result<Data> bytes =
        readOpenFile(file.get(), std::min<std::uint64_t>(maximumPageSize, mostBytes));
    if (!bytes) return std::nullopt;
    return *std::move(bytes);
  }

 private:
  static std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
  }

  Descriptor open(std::string_view path, int flags) const {
    // Without a folder in front, what is joined is the path below it.
    const std::optional<std::string> below = pathBelow(std::string(), path);
    return below ? openBelow(_folder.get(), *below, flags) : Descriptor(-1);
  }

  Descriptor _folder;
};

class Description final : public Book {
 public:
  explicit Description(std::shared_ptr<const Dictionary> description)
      : _pages(std::move(description)) {}

  std::optional<PageVersion> version(std::string_view path) const override {
    const std::optional<Data> page = contents(path);
    if (!page) return std::nullopt;
    return PageVersion{.size = page->size()};
  }

  std::optional<Data> page(std::string_view path, std::size_t mostBytes) const override {
    std::optional<Data> page = contents(path);
    if (page && page->size() > mostBytes) return std::nullopt;
    return page;
  }

 private:
  std::optional<Data> contents(std::string_view path) const {
    std::optional<Data> page = _pages.contentsOfSubpath(std::string(path));
    // An index's paths have a leading slash even where the description's have none.
    if (!page && path.starts_with('/')) {
      page = _pages.contentsOfSubpath(std::string(path.substr(1)));
    }
    return page;
  }

  mutable QXIndexableHelpBookDescription _pages;  ///< only read
};

}  // namespace

Result<std::shared_ptr<const Book>> Book::open(const std::string& path) {
  initializePageParser();  // while no thread of ours is parsing
  Descriptor folder(retried([&] { return ::open(path.c_str(), onlyLocate | O_DIRECTORY); }));
  if (folder) return std::shared_ptr<const Book>(std::make_shared<Folder>(std::move(folder)));
  if (errno != ENOTDIR) return systemError(errno);
  Result<Value> description = readKeyedDocument(path);
  if (!description) return description.error();
  Dictionary* dictionary = description->dictionary();
  if (dictionary == nullptr) return Error{"Not a description of a book"};
  return std::shared_ptr<const Book>(
      std::make_shared<Description>(std::make_shared<const Dictionary>(std::move(*dictionary))));
}

}  // namespace quorvex::reader
