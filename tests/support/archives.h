#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/compression.h"
#include "platform/keyed_archive.h"
#include "platform/sequential_archive.h"

// The writers' output as bytes. A writer that fails ends the program.

namespace quorvex::test {

/// What `write` sends to its sink.
template <typename Write>
std::string collected(const Write& write) {
  std::string bytes;
  const ByteSink sink = [&bytes](std::string_view piece) {
    bytes += piece;
    return true;
  };
  if (!write(sink)) std::abort();
  return bytes;
}

inline std::string keyed(const Dictionary& root) {
  return collected([&](const ByteSink& sink) { return archiveKeyed(root, sink); });
}

inline std::string sequential(const Dictionary& root) {
  return collected([&](const ByteSink& sink) { return archiveSequentially(root, sink); });
}

inline std::string compressed(std::string_view content, std::size_t pieceSize = std::string::npos,
                              ReadingOrder order = ReadingOrder::anyParts) {
  return collected([&](const ByteSink& sink) {
    Compressor compressor(content.size(), sink, 0, order);
    bool written = true;
    for (; written && !content.empty(); content.remove_prefix(std::min(pieceSize, content.size())))
      written = compressor.write(content.substr(0, pieceSize));
    return written && compressor.finish();
  });
}

}  // namespace quorvex::test
