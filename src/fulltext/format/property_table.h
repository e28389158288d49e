#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/lazy_bytes.h"
#include "common/value.h"
#include "fulltext/format/block_table.h"

namespace quorvex {

class ByteReader;

/// The stored properties of all documents: strings under a few keys.
class PropertyTable {
 public:
  PropertyTable() = default;
  /// Empty when the section is damaged.
  PropertyTable(const LazyBytes& section, std::uint32_t documentCount);

  /// Null for a document without properties.
  std::optional<Dictionary> properties(std::uint32_t document) const;
  /// Returns one property; empty if there is none.
  std::string_view property(std::uint32_t document, std::string_view key) const;
  /// Visits the property `key` of each document that has it, in document order.
  void forEach(
      std::string_view key,
      const std::function<void(std::uint32_t document, std::string_view value)>& visit) const;

 private:
  /// Moves to the properties of a document; returns their number plus 1, or 0 if there are none.
  std::uint64_t seek(std::uint32_t document, ByteReader& reader) const;

  std::uint32_t _documentCount = 0;
  std::vector<std::string> _keys;
  BlockTable _entries;
};

/// Encodes entries as key text, value text; null when a value is not a string.
std::optional<std::string> packProperties(const Dictionary& properties);

/// Makes the section of a PropertyTable from packed properties; null: a document without them.
std::string encodeProperties(std::span<const std::optional<std::string>* const> documents);

}  // namespace quorvex
