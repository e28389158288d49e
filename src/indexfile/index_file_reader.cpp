#include "indexfile/index_file_reader.h"

#include <cstddef>
#include <string>

#include "common/cbor.h"
#include "indexfile/keys.h"
#include "platform/keyed_archive.h"
#include "platform/searchable_item.h"

namespace quorvex {

namespace {

Error notAnIndex() {
  return {"The bytes are not an index file of format 1 or 2"};
}

/// Reads one value; long data shares the archive's bytes.
Result<Value> readValue(const Data& archive, std::string_view item, const AllowedKinds& kinds) {
  const Data part = archive.part(item);
  return CborReader(part).takeValue(kinds);
}

/// Returns false if the value is of the wrong kind for its key.
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

Result<Dictionary> readIndexDictionary(const Data& archive, const FrameLimits& limits) {
  Result<Value> root = unarchiveKeyed(archive, valuesAndSearchableItems().limitNodes(limits.nodes));
  if (!root) return root.error();
  if (Dictionary* dictionary = root->dictionary()) return std::move(*dictionary);
  return Error{"The archive contains no dictionary but a value of kind " + kindName(*root)};
}

Result<IndexFile> readIndexFile(const Data& archive, const FrameLimits& limits) {
  IndexFile file;
  file.mostNodes = limits.nodes;
  file.archive = archive;
  CborReader reader(file.archive);
  std::size_t entries = 0;
  if (!enterKeyedArchive(reader) || !reader.takeMapStart(entries)) return notAnIndex();
  for (; entries > 0; --entries) {
    std::string_view key;
    std::string_view item;
    if (!reader.takeText(key) || !reader.takeItem(item) || !takeEntry(file, key, item)) {
      return notAnIndex();
    }
  }
  if (!leaveKeyedArchive(reader)) return notAnIndex();
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

}  // namespace quorvex
