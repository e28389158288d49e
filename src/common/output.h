#pragma once

#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Writes all of `bytes` to a descriptor, going on after short writes, interruptions and where the
/// descriptor would have it come again. False when the descriptor refuses (closed pipe, full disk);
/// what was written before stays written.
bool writeFully(int descriptor, std::string_view bytes);

/// What to tell when standard output refused with this errno.
Error standardOutputError(int code);

/// Whether a descriptor is a terminal that takes escape sequences.
bool understandsEscapes(int descriptor);

/// Text output: UTF-8 to standard output, no newline added.
void writeText(std::string_view text);

/// Collects text output and writes it in large pieces. After standard output refused a piece,
/// everything further is dropped.
class TextOutput {
 public:
  TextOutput() = default;
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  TextOutput& operator<<(std::string_view text);
  /// Keyed-document output: the XML form of `value`. A missing value, or one that has no XML form,
  /// writes nothing.
  void writeKeyedDocument(const Value* value);
  /// Writes what is left and tells why something could not be written. That the reader of a pipe
  /// has gone is no failure: it has what it wanted.
  Status finish();
  /// Whether standard output refused a piece.
  bool failed() const { return _error != 0; }

 private:
  void flush();
  void write(std::string_view text);

  std::string _pending;
  int _error = 0;
};

}  // namespace quorvex
