#pragma once

#include <cstdint>
#include <string>

#include "common/descriptor.h"
#include "common/result.h"

namespace quorvex::view {

/// What makes the addresses of a book last: its port and its two secrets.
struct Addresses {
  std::uint16_t port = 0;
  std::string viewSecret;
  std::string bookSecret;
};

/// The addresses of one book, kept in a private folder from run to run, and the lock of the program
/// that serves it.
class KeptState {
 public:
  /// `book`: identifies it. Fails if nothing can be kept there.
  static Result<KeptState> open(const std::string& folder, const std::string& book);

  /// Whether another process serves this book. Otherwise this one does, as long as it lives.
  bool isServed() const { return !_isOurs; }
  /// What was kept; port 0 if there is nothing, or nothing sound.
  Addresses addresses() const;
  Status keep(const Addresses& addresses) const;

  /// Writes a page that leads the browser to an address, and returns its path: other users see what
  /// programs are called with, but not what is in this file.
  Result<std::string> writeDoor(const std::string& address) const;

 private:
  KeptState(std::string path, Descriptor lock, bool isOurs)
      : _path(std::move(path)), _lock(std::move(lock)), _isOurs(isOurs) {}

  std::string _path;  ///< of the kept file, without extension
  Descriptor _lock;
  bool _isOurs;
};

}  // namespace quorvex::view
