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
  bool isServed = false;      ///< somebody answers there
  bool allowNetwork = false;  ///< and lets the pages reach the network
};

/// The addresses of one book, kept in a private folder from run to run, in a file that whoever
/// serves the book holds locked.
class KeptState {
 public:
  /// `book`: identifies it. Fails if nothing can be kept there.
  static Result<KeptState> open(const std::string& folder, const std::string& book);

  /// Makes this process the one that serves the book, as long as it lives; false if another one
  /// does.
  bool lock() const;
  /// What was kept; port 0 if there is nothing, or nothing sound.
  Addresses addresses() const;
  /// Only for who has the lock. After a failure, nothing is kept.
  Status keep(const Addresses& addresses) const;

  /// Writes a page that leads the browser to an address, and returns its path: other users see what
  /// programs are called with, but not what is in this file.
  Result<std::string> writeDoor(const std::string& address) const;

 private:
  KeptState(std::string path, Descriptor file) : _path(std::move(path)), _file(std::move(file)) {}

  std::string _path;
  Descriptor _file;
};

}  // namespace quorvex::view
