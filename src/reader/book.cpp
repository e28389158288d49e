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

  std::optional<Data> page(std::string_view path, std::size_t mostBytes) const override {
    // Without a folder in front, what is joined is the path below it.
    const std::optional<std::string> below = pathBelow(std::string(), path);
    if (!below) return std::nullopt;
    // Merely opening a device can do harm.
    const Descriptor found = openBelow(_folder.get(), *below, onlyLocate);
    struct stat information {};
    if (!found || ::fstat(found.get(), &information) != 0 || !S_ISREG(information.st_mode)) {
      return std::nullopt;
    }
    const Descriptor file = openBelow(_folder.get(), *below, toRead);
    if (!file) return std::nullopt;
    Result<Data> bytes =
        readOpenFile(file.get(), std::min<std::uint64_t>(maximumPageSize, mostBytes));
    if (!bytes) return std::nullopt;
    return *std::move(bytes);
  }

 private:
  Descriptor _folder;
};

class Description final : public Book {
 public:
  explicit Description(std::shared_ptr<const Dictionary> description)
      : _pages(std::move(description)) {}

  std::optional<Data> page(std::string_view path, std::size_t mostBytes) const override {
    std::optional<Data> page = _pages.contentsOfSubpath(std::string(path));
    // An index's paths have a leading slash even where the description's have none.
    if (!page && path.starts_with('/')) {
      page = _pages.contentsOfSubpath(std::string(path.substr(1)));
    }
    if (page && page->size() > mostBytes) return std::nullopt;
    return page;
  }

 private:
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
