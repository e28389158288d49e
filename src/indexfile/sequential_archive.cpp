#include "platform/sequential_archive.h"

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

}  // namespace quorvex
