#include "view/kept_state.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "common/atomic_file.h"
#include "common/checksum.h"
#include "common/files.h"
#include "common/hexadecimal.h"
#include "common/output.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "view/secret.h"

namespace quorvex::view {

namespace {

constexpr mode_t ownerOnly = 0600;
/// Longer than anything that is kept.
constexpr std::size_t mostBytes = 256;

std::string nameOf(const std::string& book) {
  return "view-" + hexadecimal(checksum(book));
}

/// Takes off the text before a blank or the end of the line.
std::string_view takeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find_first_of(" \n"));
  text.remove_prefix(word.size() < text.size() ? word.size() + 1 : word.size());
  return word;
}

constexpr std::string_view served = "served";
constexpr std::string_view network = "network";

}  // namespace

Result<KeptState> KeptState::open(const std::string& folder, const std::string& book) {
  std::string path = appendPathComponent(folder, nameOf(book));
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor file(retried([&] { return ::open(path.c_str(), flags, ownerOnly); }));
  if (!file) return Error{path + ": " + systemError(errno).description};
  return KeptState(std::move(path), std::move(file));
}

bool KeptState::lock() const {
  return retried([&] { return ::flock(_file.get(), LOCK_EX | LOCK_NB); }) == 0;
}

Addresses KeptState::addresses() const {
  std::array<char, mostBytes> buffer{};
  const ssize_t size =
      retried([&] { return ::pread(_file.get(), buffer.data(), buffer.size(), 0); });
  if (size <= 0) return {};
  std::string_view text(buffer.data(), static_cast<std::size_t>(size));
  if (!text.ends_with('\n')) return {};  // it is being written
  Addresses kept;
  const std::string_view port = takeWord(text);
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), kept.port);
  kept.viewSecret = takeWord(text);
  kept.bookSecret = takeWord(text);
  kept.isServed = takeWord(text) == served;
  kept.allowNetwork = takeWord(text) == network;
  const bool isSound = error == std::errc() && end == port.data() + port.size() &&
                       hasFormOfSecret(kept.viewSecret) && hasFormOfSecret(kept.bookSecret);
  return isSound ? kept : Addresses();
}

Status KeptState::keep(const Addresses& addresses) const {
  std::string line =
      std::to_string(addresses.port) + ' ' + addresses.viewSecret + ' ' + addresses.bookSecret;
  if (addresses.isServed) line.append(" ").append(served);
  if (addresses.allowNetwork) line.append(" ").append(network);
  line += '\n';
  // An old address must not be taken for the new one if the disk is full.
  if (::ftruncate(_file.get(), 0) == 0 && ::lseek(_file.get(), 0, SEEK_SET) == 0 &&
      writeFully(_file.get(), line) && ::fdatasync(_file.get()) == 0) {
    return okStatus();
  }
  const int code = errno;
  std::string why = _path + ": " + systemError(code).description;
  // A part of it would not be sound, either.
  if (::ftruncate(_file.get(), 0) != 0) why += ", nor can the file be emptied";
  return Error{why};
}

Result<std::string> KeptState::writeDoor(const std::string& address) const {
  std::string path = _path + ".html";
  AtomicFile file(path, ownerOnly);
  if (const Status opened = file.open(); !opened) return opened.error();
  const Status written = file.write(
      "<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\">"
      "<meta name=\"referrer\" content=\"no-referrer\">"
      "<meta http-equiv=\"refresh\" content=\"0; url=" +
      address + "\"><title>quorvex-view</title>\n<p><a href=\"" + address +
      "\">Open the book</a></p>\n");
  if (!written) return written.error();
  if (const Status committed = file.commit(); !committed) return committed.error();
  return path;
}

}  // namespace quorvex::view
