#pragma once

#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Writes all of `bytes` to a descriptor, continuing after short writes, EINTR and EAGAIN. Returns
/// false on any other error (closed pipe, full disk), possibly after a partial write.
bool writeFully(int descriptor, std::string_view bytes);

/// Returns the error for a failed write to standard output.
Error standardOutputError(int code);

/// Whether a descriptor is a terminal that supports escape sequences.
bool understandsEscapes(int descriptor);

/// Writes UTF-8 to standard output, adding no newline.
void writeText(std::string_view text);

/// Buffers text output and writes it in large pieces. After a failed write, everything further is
/// dropped.
class TextOutput {
 public:
  TextOutput() = default;
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  TextOutput& operator<<(std::string_view text);
  /// Writes the XML form of `value`, or nothing if there is no value or it has no XML form.
  void writeKeyedDocument(const Value* value);
  /// Flushes, and reports why any write failed. A closed pipe is not a failure: its reader has what
  /// it wanted.
  Status finish();
  /// Whether a write has failed.
  bool failed() const { return _error != 0; }

 private:
  void flush();
  void write(std::string_view text);

  std::string _pending;
  int _error = 0;
};

}  // namespace quorvex
