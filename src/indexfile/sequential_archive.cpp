#include "platform/sequential_archive.h"

#include <string>

namespace quorvex {

namespace {

constexpr std::string_view archiver = "QXSequentialArchiver";
constexpr std::int64_t version = 1;

}  // namespace

Status archiveSequentially(const Dictionary& root, const ByteSink& sink) {
  CborWriter writer(sink);
  const CborMapEntries entries(root);
  writer.text(archiver);
  writer.integer(version);
  writer.integer(static_cast<std::int64_t>(entries.size()));
  for (const auto& [key, value] : entries) {
    writer.text(key);
    writer.value(*value);
  }
  return writer.finish();
}

Result<Dictionary> unarchiveSequentially(std::string_view bytes, const AllowedKinds& kinds) {
  CborReader reader(bytes);
  std::string_view foundArchiver;
  std::int64_t foundVersion = 0;
  std::int64_t count = 0;
  if (!reader.takeText(foundArchiver)) return reader.error();
  if (foundArchiver != archiver) return Error{"Not a sequential archive"};
  if (!reader.takeInteger(foundVersion)) return reader.error();
  if (foundVersion != version) {
    return Error{"The archive has version " + std::to_string(foundVersion) +
                 "; this program reads version " + std::to_string(version)};
  }
  if (!reader.takeInteger(count)) return reader.error();
  Dictionary root;
  for (; count > 0; --count) {
    std::string_view key;
    if (!reader.takeText(key)) return reader.error();
    Result<Value> value = reader.takeValue(kinds);
    if (!value) return value.error();
    if (!root.emplace(key, *std::move(value)).second) {
      return Error{"A key stands twice: " + std::string(key)};
    }
  }
  if (!reader.atEnd()) return Error{"There is more behind the archive"};
  return root;
}

}  // namespace quorvex
