#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "indexfile/frame_table.h"
#include "tests/support/archives.h"

namespace quorvex::test {

/// A compressed file with a table.
inline std::string framed(std::string_view content, const std::vector<std::uint64_t>& bounds = {}) {
  return collected([&](const ByteSink& sink) {
    Compressor compressor(content.size(), sink);
    return compressor.write(content) && compressor.finishWithTable(bounds);
  });
}

/// The keyed archive of a tree as a compressed file with a table.
inline std::string indexFile(const Dictionary& root) {
  ArchiveOutline outline;
  const std::string archive =
      collected([&](const ByteSink& sink) { return archiveKeyed(root, sink, &outline); });
  return framed(archive, outline.bounds);
}

/// The size of the table's frame at the end of a file; 0 if there is none.
inline std::size_t sizeOfTable(const std::string& file) {
  const std::size_t footer = std::min(file.size(), FrameTable::footerSize);
  return static_cast<std::size_t>(
      sizeOfFrameTable(std::string_view(file).substr(file.size() - footer)));
}

/// The table of a file, if it has one.
inline std::optional<FrameTable> tableOf(const std::string& file) {
  const std::size_t size = sizeOfTable(file);
  if (size == 0 || size > file.size()) return {};
  return decodeFrameTable(std::string_view(file).substr(file.size() - size), file.size() - size);
}

/// The file with another table.
inline std::string withTable(const std::string& file, const FrameTable& table) {
  return file.substr(0, file.size() - sizeOfTable(file)) + encodeFrameTable(table);
}

}  // namespace quorvex::test
