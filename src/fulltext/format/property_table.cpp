#include "fulltext/format/property_table.h"

#include <algorithm>
#include <map>

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "fulltext/format/index_format.h"

namespace quorvex {

namespace {

using PackedProperties = std::span<const std::optional<std::string>* const>;

/// Returns the distinct keys of all documents, numbered in byte order.
std::map<std::string, std::uint32_t, std::less<>> propertyKeys(PackedProperties documents) {
  std::map<std::string, std::uint32_t, std::less<>> keys;
  for (const std::optional<std::string>* document : documents) {
    ByteReader reader(*document ? std::string_view(**document) : "");
    while (!reader.rest().empty()) {
      const std::string_view key = reader.text();
      reader.text();
      if (!keys.contains(key)) keys.emplace(key, 0);
    }
  }
  std::uint32_t number = 0;
  for (auto& [key, index] : keys)
    index = number++;
  return keys;
}

}  // namespace

PropertyTable::PropertyTable(const LazyBytes& section, std::uint32_t documentCount)
    : _documentCount(documentCount) {
  LazyReader reader(section);
  for (std::uint64_t left = reader.varint(); left > 0 && reader.ok(); --left) {
    std::string key(reader.text().all());
    // Only keys that differ take bytes of the section.
    if (!_keys.empty() && key <= _keys.back()) return;
    _keys.push_back(std::move(key));
  }
  if (reader.ok()) _entries = BlockTable(reader.rest(), documentCount, documentsPerBlock);
}

std::uint64_t PropertyTable::seek(std::uint32_t document, ByteReader& reader) const {
  if (document >= _documentCount) return 0;
  reader = ByteReader(_entries.block(document / documentsPerBlock));
  for (std::uint32_t left = document % documentsPerBlock; left > 0 && reader.ok(); --left) {
    for (std::uint64_t entries = reader.varint(); entries > 1 && reader.ok(); --entries) {
      reader.varint();
      reader.text();
    }
  }
  const std::uint64_t entries = reader.varint();
  return reader.ok() ? entries : 0;
}

std::optional<Dictionary> PropertyTable::properties(std::uint32_t document) const {
  ByteReader reader({});
  const std::uint64_t entries = seek(document, reader);
  if (entries == 0) return std::nullopt;
  Dictionary properties;
  for (std::uint64_t left = entries - 1; left > 0; --left) {
    const std::uint64_t key = reader.varint();
    const std::string_view value = reader.text();
    if (!reader.ok() || key >= _keys.size()) return std::nullopt;
    properties.insert_or_assign(_keys[key], value);
  }
  return properties;
}

std::string_view PropertyTable::property(std::uint32_t document, std::string_view key) const {
  ByteReader reader({});
  for (std::uint64_t entries = seek(document, reader); entries > 1; --entries) {
    const std::uint64_t found = reader.varint();
    const std::string_view value = reader.text();
    if (!reader.ok() || found >= _keys.size()) return {};
    if (_keys[found] == key) return value;
  }
  return {};
}

void PropertyTable::forEach(
    std::string_view key,
    const std::function<void(std::uint32_t document, std::string_view value)>& visit) const {
  const auto wanted = static_cast<std::uint64_t>(std::ranges::find(_keys, key) - _keys.begin());
  if (wanted == _keys.size()) return;
  ByteReader reader({});
  for (std::uint32_t document = 0; document < _documentCount; ++document) {
    if (document % documentsPerBlock == 0) {
      reader = ByteReader(_entries.block(document / documentsPerBlock));
    }
    for (std::uint64_t entries = reader.varint(); entries > 1 && reader.ok(); --entries) {
      const std::uint64_t found = reader.varint();
      const std::string_view value = reader.text();
      if (reader.ok() && found == wanted) visit(document, value);
    }
  }
}

std::optional<std::string> packProperties(const Dictionary& properties) {
  std::string packed;
  for (const auto& [key, value] : properties) {
    const std::string* text = value.string();
    if (text == nullptr) return std::nullopt;
    appendText(packed, key);
    appendText(packed, *text);
  }
  return packed;
}

std::string encodeProperties(PackedProperties documents) {
  const auto keys = propertyKeys(documents);
  std::string head;
  appendVarint(head, keys.size());
  for (const auto& [key, number] : keys)
    appendText(head, key);

  BlockTableBuilder table;
  std::string packed;
  for (std::size_t i = 0; i < documents.size(); ++i) {
    if (i % documentsPerBlock == 0) table.startBlock();
    const std::optional<std::string>& document = *documents[i];
    if (!document) {
      appendVarint(table.entries(), 0);
      continue;
    }
    packed.clear();
    std::size_t count = 0;
    for (ByteReader reader(*document); !reader.rest().empty(); ++count) {
      appendVarint(packed, keys.find(reader.text())->second);
      appendText(packed, reader.text());
    }
    appendVarint(table.entries(), count + 1);
    table.entries() += packed;
  }
  return head + table.take();
}

}  // namespace quorvex
