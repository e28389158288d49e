#include "view/kept_state.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>

#include <fcntl.h>
#include <sys/file.h>

#include "common/atomic_file.h"
#include "common/checksum.h"
#include "common/files.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "view/secret.h"

namespace quorvex::view {

namespace {

constexpr mode_t ownerOnly = 0600;
/// Longer than anything that is kept.
constexpr std::uint64_t mostBytes = 1024;

std::string nameOf(const std::string& book) {
  std::array<char, 16> digits{};
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), checksum(book), 16);
  return "view-" + std::string(digits.data(), written.ptr);
}

/// Takes off the text before a blank or the end of the line.
std::string_view takeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find_first_of(" \n"));
  text.remove_prefix(word.size() < text.size() ? word.size() + 1 : word.size());
  return word;
}

Status writeFile(const std::string& path, std::string_view bytes) {
  AtomicFile file(path, ownerOnly);
  if (Status opened = file.open(); !opened) return opened;
  if (Status written = file.write(bytes); !written) return written;
  return file.commit();
}

}  // namespace

Result<KeptState> KeptState::open(const std::string& folder, const std::string& book) {
  std::string path = appendPathComponent(folder, nameOf(book));
  const std::string lockPath = path + ".lock";
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor lock(retried([&] { return ::open(lockPath.c_str(), flags, ownerOnly); }));
  if (!lock) return Error{lockPath + ": " + systemError(errno).description};
  const bool isOurs = retried([&] { return ::flock(lock.get(), LOCK_EX | LOCK_NB); }) == 0;
  if (!isOurs && errno != EWOULDBLOCK) {
    return Error{lockPath + ": " + systemError(errno).description};
  }
  return KeptState(std::move(path), std::move(lock), isOurs);
}

Addresses KeptState::addresses() const {
  const Result<Data> file = readFile(_path, mostBytes);
  if (!file) return {};
  std::string_view text = file->bytes();
  Addresses kept;
  const std::string_view port = takeWord(text);
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), kept.port);
  kept.viewSecret = takeWord(text);
  kept.bookSecret = takeWord(text);
  const bool isSound = error == std::errc() && end == port.data() + port.size() &&
                       hasFormOfSecret(kept.viewSecret) && hasFormOfSecret(kept.bookSecret);
  return isSound ? kept : Addresses();
}

Status KeptState::keep(const Addresses& addresses) const {
  return writeFile(_path, std::to_string(addresses.port) + ' ' + addresses.viewSecret + ' ' +
                              addresses.bookSecret + '\n');
}

Result<std::string> KeptState::writeDoor(const std::string& address) const {
  std::string path = _path + ".html";
  const Status written = writeFile(path,
                                   "<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\">"
                                   "<meta name=\"referrer\" content=\"no-referrer\">"
                                   "<meta http-equiv=\"refresh\" content=\"0; url=" +
                                       address + "\"><title>quorvex-view</title>\n<p><a href=\"" +
                                       address + "\">Open the book</a></p>\n");
  if (!written) return written.error();
  return path;
}

}  // namespace quorvex::view
