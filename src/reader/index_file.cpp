#include "reader/index_file.h"

#include <cstddef>

#include "common/cbor.h"
#include "names/index_file_keys.h"
#include "platform/beacon/searchable_item.h"
#include "reader/cbor_item.h"

namespace quorvex::reader {

namespace {

Error notAnIndex() {
  return {"The bytes are not an index file of format 1 or 2"};
}

/// One value; long data shares the archive.
Result<Value> readValue(const Data& archive, std::string_view item, const AllowedKinds& kinds) {
  const Data part = archive.part(item);
  return CborReader(part).takeValue(kinds);
}

/// The number of entries of the dictionary at the root, which `rest` then begins with.
std::optional<std::size_t> enterRoot(const Data& archive, std::string_view& rest) {
  CborReader reader(archive);
  std::size_t entries = 0;
  std::string_view key;
  std::size_t size = 0;
  if (!reader.takeTag(cborSelfDescribedTag) || !reader.takeMapStart(entries) ||
      !reader.takeText(key) || key != "root" || !reader.takeMapStart(size)) {
    return std::nullopt;
  }
  rest = reader.rest();
  return size;
}

/// Whether the archive ends as one does.
bool isEndOfArchive(std::string_view rest) {
  CborReader reader(rest);
  std::string_view key;
  std::string_view archiver;
  std::int64_t version = 0;
  return reader.takeText(key) && key == "version" && reader.takeInteger(version) && version == 1 &&
         reader.takeText(key) && key == "archiver" && reader.takeText(archiver) &&
         archiver == "QXKeyedArchiver" && reader.atEnd();
}

/// False when the value is not what the key stands for.
bool takeEntry(IndexFile& file, std::string_view key, std::string_view item) {
  if (key == anchorTableKey) {
    file.anchors = item;
  } else if (key == indexableItemsKey) {
    file.items = item;
  } else if (key == fullTextIndexKey || key == semanticIndexKey) {
    const Result<Value> value = readValue(file.archive, item, {"data"});
    if (!value) return false;
    (key == semanticIndexKey ? file.semantic : file.fullText) = *value->data();
  } else if (key == remoteRootKey) {
    const Result<Value> value = readValue(file.archive, item, {"string"});
    if (!value) return false;
    file.remoteRoot = *value->string();
  }
  return true;
}

}  // namespace

Result<IndexFile> readIndexFile(const Data& archive, std::uint64_t mostNodes) {
  IndexFile file;
  file.mostNodes = mostNodes;
  file.archive = archive;
  std::string_view rest;
  const std::optional<std::size_t> entries = enterRoot(file.archive, rest);
  if (!entries) return notAnIndex();
  for (std::size_t left = *entries; left > 0; --left) {
    const std::string_view keyItem = takeCborItem(rest);
    const std::string_view item = takeCborItem(rest);
    std::string_view key;
    if (item.empty() || !CborReader(keyItem).takeText(key) || !takeEntry(file, key, item)) {
      return notAnIndex();
    }
  }
  if (!isEndOfArchive(rest)) return notAnIndex();
  return file;
}

Result<Dictionary> readAnchors(const IndexFile& file) {
  Result<Value> anchors =
      readValue(file.archive, file.anchors,
                AllowedKinds{"string", "array", "dictionary"}.limitNodes(file.mostNodes));
  if (!anchors) return anchors.error();
  if (Dictionary* dictionary = anchors->dictionary()) return std::move(*dictionary);
  return notAnIndex();
}

Result<Array> readItems(const IndexFile& file) {
  Result<Value> items =
      readValue(file.archive, file.items, valuesAndSearchableItems().limitNodes(file.mostNodes));
  if (!items) return items.error();
  if (Array* array = items->array()) return std::move(*array);
  return notAnIndex();
}

}  // namespace quorvex::reader
