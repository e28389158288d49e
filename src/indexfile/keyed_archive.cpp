#include "platform/keyed_archive.h"

#include <string>
#include <utility>

namespace quorvex {

namespace {

constexpr std::string_view rootKey = "root";
constexpr std::string_view versionKey = "version";
constexpr std::string_view archiverKey = "archiver";
constexpr std::string_view archiver = "QXKeyedArchiver";
constexpr std::int64_t version = 1;
constexpr std::size_t entryCount = 3;

/// Reads the next key; fails unless it is `key`.
bool takeKey(CborReader& reader, std::string_view key) {
  std::string_view found;
  return reader.takeText(found) && (found == key || reader.refuse("Not a keyed archive"));
}

template <typename Bytes>
Result<Value> unarchive(const Bytes& bytes, const AllowedKinds& kinds) {
  CborReader reader(bytes);
  if (const Status entered = enterKeyedArchive(reader); !entered) return entered.error();
  Result<Value> root = reader.takeValue(kinds);
  if (!root) return root;
  if (const Status left = leaveKeyedArchive(reader); !left) return left.error();
  return root;
}

}  // namespace

Status archiveKeyed(const Dictionary& root, const ByteSink& sink, ArchiveOutline* outline) {
  CborWriter writer(sink);
  std::vector<std::uint64_t> bounds;
  writer.tag(cborSelfDescribedTag);
  // In deterministic encoding order: shorter keys first.
  writer.mapStart(entryCount);
  writer.text(rootKey);
  writer.value(root, &bounds);
  bounds.push_back(writer.position());
  writer.text(versionKey);
  writer.integer(version);
  writer.text(archiverKey);
  writer.text(archiver);
  if (outline != nullptr) *outline = {writer.position(), writer.items(), std::move(bounds)};
  return writer.finish();
}

Result<Value> unarchiveKeyed(std::string_view bytes, const AllowedKinds& kinds) {
  return unarchive(bytes, kinds);
}
Result<Value> unarchiveKeyed(const Data& bytes, const AllowedKinds& kinds) {
  return unarchive(bytes, kinds);
}

Status enterKeyedArchive(CborReader& reader) {
  std::size_t entries = 0;
  if (!reader.takeTag(cborSelfDescribedTag) || !reader.takeMapStart(entries)) return reader.error();
  if (entries != entryCount) return Error{"Not a keyed archive"};
  if (!takeKey(reader, rootKey)) return reader.error();
  return okStatus();
}

Status leaveKeyedArchive(CborReader& reader) {
  std::int64_t foundVersion = 0;
  if (!takeKey(reader, versionKey) || !reader.takeInteger(foundVersion)) return reader.error();
  if (foundVersion != version) {
    return Error{"The archive has version " + std::to_string(foundVersion) +
                 "; this program reads version " + std::to_string(version)};
  }
  std::string_view foundArchiver;
  if (!takeKey(reader, archiverKey) || !reader.takeText(foundArchiver)) return reader.error();
  if (foundArchiver != archiver || !reader.atEnd()) return Error{"Not a keyed archive"};
  return okStatus();
}

}  // namespace quorvex
