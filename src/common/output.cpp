#include "common/output.h"

#include <cerrno>
#include <cstdlib>

#include <poll.h>
#include <unistd.h>

#include "common/keyed_document.h"
#include "common/system_error.h"

namespace quorvex {

bool writeFully(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno != EINTR && errno != EAGAIN) return false;
      // Another process may have made the pipe or terminal non-blocking.
      pollfd waiting{descriptor, POLLOUT, 0};
      if (errno == EAGAIN) ::poll(&waiting, 1, -1);
      continue;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

Error standardOutputError(int code) {
  return {"Cannot write to standard output: " + systemError(code).description};
}

bool understandsEscapes(int descriptor) {
  if (::isatty(descriptor) == 0) return false;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) != "dumb" && *terminal != '\0';
}

void writeText(std::string_view text) {
  writeFully(STDOUT_FILENO, text);
}

TextOutput& TextOutput::operator<<(std::string_view text) {
  constexpr std::size_t piece = 64 * 1024;
  _pending += text;
  if (_pending.size() >= piece) flush();
  return *this;
}

void TextOutput::writeKeyedDocument(const Value* value) {
  if (value == nullptr) return;
  const Result<std::string> document = keyedDocumentXml(*value);
  if (!document) return;
  flush();
  write(*document);
}

void TextOutput::flush() {
  write(_pending);
  _pending.clear();
}

void TextOutput::write(std::string_view text) {
  if (_error == 0 && !writeFully(STDOUT_FILENO, text)) _error = errno;
}

Status TextOutput::finish() {
  flush();
  if (_error == 0 || _error == EPIPE) return okStatus();
  return standardOutputError(_error);
}

}  // namespace quorvex
