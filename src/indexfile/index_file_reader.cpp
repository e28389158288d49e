#include "indexfile/index_file_reader.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/cbor.h"
#include "common/files.h"
#include "indexfile/keys.h"
#include "platform/keyed_archive.h"
#include "platform/searchable_item.h"

namespace quorvex {

namespace {

Error notAnIndex() {
  return {"The bytes are not an index file of format 1 or 2"};
}

/// Reads one value; long data shares its bytes.
Result<Value> readValue(const Data& item, const AllowedKinds& kinds) {
  return CborReader(item).takeValue(kinds);
}

/// Returns the content of a data value, without reading it; null if the item is anything else.
std::optional<Data> contentOfData(const Data& item) {
  constexpr std::size_t longestStart = 9;
  const std::string_view start = item.lazyBytes().part(0, longestStart);
  CborReader reader(start);
  std::uint64_t size = 0;
  if (!reader.takeDataStart(size)) return std::nullopt;
  const std::size_t before = start.size() - reader.rest().size();
  if (size != item.size() - before) return std::nullopt;
  return item.lazyPart(before, item.size() - before);
}

/// Returns false if the value is of the wrong kind for its key.
bool takeEntry(IndexFile& file, std::string_view key, const Data& item) {
  if (key == anchorTableKey) {
    file.anchors = item;
  } else if (key == indexableItemsKey) {
    file.items = item;
  } else if (key == fullTextIndexKey || key == semanticIndexKey) {
    std::optional<Data>& content = key == semanticIndexKey ? file.semantic : file.fullText;
    content = contentOfData(item);
    return content.has_value();
  } else if (key == remoteRootKey) {
    const Result<Value> value = readValue(item, {"string"});
    if (!value) return false;
    file.remoteRoot = *value->string();
  }
  return true;
}

/// Reads an entry that the table locates; false if there is none.
bool takeLocatedEntry(IndexFile& file, const Data& entry) {
  constexpr std::size_t longestKey = 64;
  const std::string_view start = entry.lazyBytes().part(0, longestKey);
  CborReader reader(start);
  std::string_view key;
  if (!reader.takeText(key)) return false;
  const std::size_t before = start.size() - reader.rest().size();
  return takeEntry(file, key, entry.lazyPart(before, entry.size() - before));
}

/// Reads the top level by the table. Null if that does not fit the archive.
std::optional<IndexFile> readByTable(const std::shared_ptr<const FrameStore>& store) {
  const FrameStore::Use use(store);
  const std::vector<std::uint64_t>& bounds = store->table().bounds;
  const Data archive = FrameStore::contentOf(store);
  IndexFile file;
  file.store = store;
  if (bounds.empty()) return std::nullopt;
  const auto size = [&](std::size_t i) { return static_cast<std::size_t>(bounds[i]); };
  CborReader head(archive.lazyBytes().part(0, size(0)));
  CborReader tail(archive.lazyBytes().from(size(bounds.size() - 1)));
  std::size_t entries = 0;
  if (!enterKeyedArchive(head) || !head.takeMapStart(entries) || !head.atEnd() ||
      !leaveKeyedArchive(tail) || entries != bounds.size() - 1) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < entries; ++i) {
    if (!takeLocatedEntry(file, archive.lazyPart(size(i), size(i + 1) - size(i)))) {
      return std::nullopt;
    }
  }
  if (store->isDamaged()) return std::nullopt;
  return file;
}

}  // namespace

Result<Dictionary> readIndexDictionary(const Data& archive, const FrameLimits& limits) {
  Result<Value> root = unarchiveKeyed(archive, valuesAndSearchableItems().limitNodes(limits.nodes));
  if (!root) return root.error();
  if (Dictionary* dictionary = root->dictionary()) return std::move(*dictionary);
  return Error{"The archive contains no dictionary but a value of kind " + kindName(*root)};
}

Result<IndexFile> readIndexFile(const Result<Data>& archive, const FrameLimits& limits) {
  if (!archive) return archive.error();
  IndexFile file;
  file.mostNodes = limits.nodes;
  CborReader reader(*archive);
  std::size_t entries = 0;
  if (!enterKeyedArchive(reader) || !reader.takeMapStart(entries)) return notAnIndex();
  for (; entries > 0; --entries) {
    std::string_view key;
    std::string_view item;
    if (!reader.takeText(key) || !reader.takeItem(item) ||
        !takeEntry(file, key, archive->part(item))) {
      return notAnIndex();
    }
  }
  if (!leaveKeyedArchive(reader)) return notAnIndex();
  return file;
}

std::optional<IndexFile> openByTable(RegularFile file) {
  const FrameLimits limits(file.size);
  const auto store = FrameStore::open(std::move(file));
  std::optional<IndexFile> index = store == nullptr ? std::nullopt : readByTable(store);
  if (index) index->mostNodes = limits.nodes;
  return index;
}

Result<OpenedIndexFile> openIndexFile(const std::string& path) {
  Result<RegularFile> file = openRegularFile(path, maximumFileSize);
  if (!file) return file.error();
  if (std::optional<IndexFile> index = openByTable(*std::move(file))) {
    return OpenedIndexFile{*std::move(index)};
  }
  const Result<DecompressedFile> unpacked = decompressFile(path);
  if (!unpacked) return unpacked.error();
  return OpenedIndexFile{readIndexFile(unpacked->content, unpacked->limits)};
}

Result<Dictionary> readAnchors(const IndexFile& file) {
  Result<Value> anchors = readValue(
      file.anchors, AllowedKinds{"string", "array", "dictionary"}.limitNodes(file.mostNodes));
  if (!anchors) return anchors.error();
  if (Dictionary* dictionary = anchors->dictionary()) return std::move(*dictionary);
  return notAnIndex();
}

Result<Array> readItems(const IndexFile& file) {
  Result<Value> items =
      readValue(file.items, valuesAndSearchableItems().limitNodes(file.mostNodes));
  if (!items) return items.error();
  if (Array* array = items->array()) return std::move(*array);
  return notAnIndex();
}

}  // namespace quorvex
