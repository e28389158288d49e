#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "quorvex/help_index.h"
#include "view/index/kept_index.h"

namespace quorvex::view {

struct BookPages;

struct IndexState {
  enum class Phase { opening, making, ready, failed };
  Phase phase = Phase::opening;
  std::size_t pagesDone = 0, pagesInAll = 0;  ///< while one is being made
  /// Of the index in use: another one for another index, the same after a restart; null before the
  /// first.
  std::optional<std::uint64_t> identity = std::nullopt;
  bool isRemaking = false;   ///< ready, but the book has changed and a new one is being made
  std::string message = {};  ///< why there is none, or why the new one was not kept
};

/// Has an index of a book ready for searching: the one kept from an earlier run at once, and one
/// made anew in the background if there is none or the book has changed since. Looks at the book
/// again when it is searched, at most once a minute. Thread-safe.
class IndexKeeper {
 public:
  struct Book {
    std::string folder;
    /// Used as it is, and never made again.
    std::optional<std::string> indexFile = std::nullopt;
  };

  /// `cacheFolder`: a private folder, or empty to keep the index in memory only.
  IndexKeeper(const Book& book, const std::string& cacheFolder);
  /// Ends even the making of an index, at the next page. Only its last part, which puts together
  /// what was read, is waited for: a tenth of the whole.
  ~IndexKeeper();
  IndexKeeper(const IndexKeeper&) = delete;
  IndexKeeper& operator=(const IndexKeeper&) = delete;

  IndexState state() const;
  /// Returns the index with the book's pages, opening it again if it was closed while idle; null
  /// while there is none.
  std::optional<HelpIndex> index();
  /// Closes the index if nobody has asked for it for that long, and returns memory to the system.
  void closeIfIdle(std::chrono::seconds idle);

 private:
  using Clock = std::chrono::steady_clock;
  /// From what an index can be opened again: a file, or bytes if it could not be kept.
  struct Source {
    std::string path = {};
    std::shared_ptr<const std::string> bytes = nullptr;
    /// Of the pages that it was made from, or of the given file.
    std::optional<std::uint64_t> fingerprint = std::nullopt;
    std::string trouble = {};  ///< why it could not be kept
  };

  void work();
  void openFirst();
  void lookAtBook();
  void make(BookPages pages);
  void keep(Source source);
  Expected<HelpIndex> opened(const Source& source) const;
  /// Returns false if it cannot be opened.
  bool useKept(const KeptIndex::File& file);
  void use(HelpIndex index, const Source& source);
  void begin(std::size_t pages);
  void step();
  void fail(const std::string& why);

  const Book _book;
  std::optional<KeptIndex> _kept;
  std::string _notKept;  ///< why there is no folder to keep it in

  mutable std::mutex _mutex;  ///< for the members up to the next blank line
  std::condition_variable _wake;
  IndexState _state;
  std::optional<HelpIndex> _index;
  Source _source;  ///< of the index in use, even while it is closed
  Clock::time_point _asked = Clock::now();
  Clock::time_point _nextLook = Clock::time_point::max();
  bool _mustLook = true;

  std::mutex _opening;  ///< held while the index is opened again, so that this happens once
  std::atomic<bool> _ending = false;
  std::atomic<std::size_t> _steps = 0;  ///< the first ones are pages read
  std::thread _worker;                  ///< last
};

}  // namespace quorvex::view
