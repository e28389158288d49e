#include "view/index/index_keeper.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "view/index/book_fingerprint.h"
#include "view/index/index_making.h"
#include "view/memory.h"

namespace quorvex::view {

namespace {

using Phase = IndexState::Phase;

/// Ends the making of an index. No std::exception, so that nothing on the way takes it for one.
struct Ended {};

/// Until the book is looked at again, at least; and so many times as long as the last look took,
/// with the making of an index, so that a book under construction does not keep a processor busy.
constexpr auto betweenLooks = std::chrono::minutes(1);
constexpr int restAfterWork = 10;

std::string realPath(const std::string& folder) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::canonical(folder, error);
  return error ? folder : path.string();
}

}  // namespace

IndexKeeper::IndexKeeper(const Book& book, const std::string& cacheFolder)
    : _book{realPath(book.folder), book.indexFile} {
  if (!cacheFolder.empty() && !_book.indexFile) {
    Result<KeptIndex> kept = KeptIndex::in(cacheFolder, _book.folder);
    if (kept) {
      _kept = *std::move(kept);
    } else {
      _notKept = kept.error().description;
    }
  }
  _worker = std::thread([this] { work(); });
}

IndexKeeper::~IndexKeeper() {
  {
    const std::scoped_lock lock(_mutex);
    _ending = true;
  }
  _wake.notify_all();
  _worker.join();
}

IndexState IndexKeeper::state() const {
  const std::scoped_lock lock(_mutex);
  IndexState state = _state;
  state.pagesDone = std::min(_steps.load(), state.pagesInAll);
  return state;
}

std::optional<HelpIndex> IndexKeeper::index() {
  Source source;
  {
    const std::scoped_lock lock(_mutex);
    _asked = Clock::now();
    if (_asked >= _nextLook && _state.phase >= Phase::ready) {
      _mustLook = true;
      _wake.notify_all();
    }
    if (_index || _state.phase != Phase::ready) return _index;
  }
  const std::scoped_lock opening(_opening);
  {
    const std::scoped_lock lock(_mutex);
    if (_index || _state.phase != Phase::ready) return _index;
    source = _source;
  }
  // The given file may be another one by now.
  if (_book.indexFile) source.fingerprint = fingerprintOf(source.path);
  Expected<HelpIndex> index = opened(source);
  const std::scoped_lock lock(_mutex);
  if (_index) return _index;  // a new one, meanwhile
  if (index) {
    _state.identity = _source.fingerprint = source.fingerprint;
    return _index = *std::move(index);
  }
  // The file was removed or damaged.
  _state.phase = _book.indexFile ? Phase::failed : Phase::opening;
  _state.message = index.failure().message;
  _source = {};
  _mustLook = true;
  _wake.notify_all();
  return std::nullopt;
}

void IndexKeeper::closeIfIdle(std::chrono::seconds idle) {
  {
    std::optional<HelpIndex> closed;
    const std::scoped_lock lock(_mutex);
    if (!_index || Clock::now() - _asked < idle) return;
    closed.swap(_index);
  }
  returnFreeMemory();
}

void IndexKeeper::work() {
  const auto attempt = [this](void (IndexKeeper::*task)()) {
    try {
      (this->*task)();
    } catch (const Ended&) {
      return;
    } catch (const std::bad_alloc&) {
      fail("There is not enough memory for the index");
    } catch (const std::exception& exception) {
      fail(exception.what());
    }
  };
  attempt(&IndexKeeper::openFirst);
  std::unique_lock lock(_mutex);
  while (!_book.indexFile) {
    _wake.wait(lock, [this] { return _ending || _mustLook; });
    if (_ending) return;
    _mustLook = false;
    _nextLook = Clock::time_point::max();
    lock.unlock();
    const auto begin = Clock::now();
    attempt(&IndexKeeper::lookAtBook);
    const auto end = Clock::now();
    lock.lock();
    _nextLook = end + std::max<Clock::duration>(betweenLooks, (end - begin) * restAfterWork);
  }
}

void IndexKeeper::openFirst() {
  if (_book.indexFile) {
    const Source source{.path = *_book.indexFile, .fingerprint = fingerprintOf(*_book.indexFile)};
    Expected<HelpIndex> index = opened(source);
    if (!index) return fail(index.failure().message);
    return use(*std::move(index), source);
  }
  if (!_kept) return;
  if (const std::optional<KeptIndex::File> file = _kept->newest()) useKept(*file);
}

void IndexKeeper::lookAtBook() {
  Result<BookPages> pages = listPages(_book.folder);
  if (!pages) return fail(_book.folder + " cannot be read: " + pages.error().description);
  if (pages->subpaths.empty()) {
    return fail("There are no pages (.html, .htm) in " + _book.folder);
  }
  {
    const std::scoped_lock lock(_mutex);
    if (_source.fingerprint == pages->fingerprint) {
      _state.message = _source.trouble;
      return;
    }
  }
  // Another program may have made it.
  if (_kept) {
    const std::optional<KeptIndex::File> file = _kept->madeFrom(pages->fingerprint);
    if (file && useKept(*file)) return;
  }
  make(*std::move(pages));
}

void IndexKeeper::make(BookPages pages) {
  begin(pages.subpaths.size());
  const std::string count = std::to_string(pages.subpaths.size());
  Result<std::string> bytes =
      makeIndex(_book.folder, std::move(pages.subpaths), [this] { step(); });
  if (!bytes) return fail(bytes.error().description);
  const Source source{.bytes = std::make_shared<const std::string>(*std::move(bytes)),
                      .fingerprint = pages.fingerprint};
  Expected<HelpIndex> index = opened(source);
  if (!index) return fail(index.failure().message);
  if (index->contents().pages == 0) {
    return fail("None of the " + count + " pages in " + _book.folder + " can be searched");
  }
  use(*std::move(index), source);
  keep(source);
  returnFreeMemory();
}

void IndexKeeper::keep(Source source) {
  if (_kept) {
    const Result<KeptIndex::File> file = _kept->keep(*source.bytes, *source.fingerprint);
    if (file) source = {.path = file->path, .fingerprint = source.fingerprint};
    if (!file) source.trouble = "The index could not be kept: " + file.error().description;
  } else if (!_notKept.empty()) {
    source.trouble = "The index is not kept: " + _notKept;
  }
  const std::scoped_lock lock(_mutex);
  _source = std::move(source);
  _state.message = _source.trouble;
}

Expected<HelpIndex> IndexKeeper::opened(const Source& source) const {
  const Expected<HelpIndex> index =
      source.bytes ? HelpIndex::fromBytes(*source.bytes) : HelpIndex::open(source.path);
  return index ? index->withBook(_book.folder) : index;
}

bool IndexKeeper::useKept(const KeptIndex::File& file) {
  const Source source{.path = file.path, .fingerprint = file.fingerprint};
  Expected<HelpIndex> index = opened(source);
  if (!index) return false;
  KeptIndex::touch(file);
  use(*std::move(index), source);
  return true;
}

void IndexKeeper::use(HelpIndex index, const Source& source) {
  std::optional<HelpIndex> next = std::move(index);  // then the earlier one, closed without lock
  const std::scoped_lock lock(_mutex);
  _index.swap(next);
  _source = source;
  _state = {.phase = Phase::ready, .identity = source.fingerprint};
  _asked = Clock::now();
}

void IndexKeeper::begin(std::size_t pages) {
  const std::scoped_lock lock(_mutex);
  _steps = 0;
  _state.pagesInAll = pages;
  _state.isRemaking = _state.phase == Phase::ready;
  if (!_state.isRemaking) _state.phase = Phase::making;
}

void IndexKeeper::step() {
  if (_ending) throw Ended();
  ++_steps;
}

void IndexKeeper::fail(const std::string& why) {
  const std::scoped_lock lock(_mutex);
  const bool hasEarlier = _state.phase == Phase::ready;
  _state.isRemaking = false;
  if (!hasEarlier) _state.phase = Phase::failed;
  _state.message =
      hasEarlier ? "The book has changed, but its index could not be made again: " + why : why;
}

}  // namespace quorvex::view
