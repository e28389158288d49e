#include "fulltext/format/analysis_section.h"

#include "common/bytes.h"

namespace quorvex {

namespace {

// Stored values; never change them.
constexpr std::uint8_t stringKind = 1;
constexpr std::uint8_t integerKind = 2;
constexpr std::uint8_t arrayKind = 3;

bool encodeScalar(std::string& out, const Value& value) {
  if (const std::string* text = value.string()) {
    out += static_cast<char>(stringKind);
    appendText(out, *text);
    return true;
  }
  if (const std::int64_t* number = value.integer()) {
    out += static_cast<char>(integerKind);
    const auto bits = static_cast<std::uint64_t>(*number);
    appendVarint(out, (bits << 1U) ^ (*number < 0 ? UINT64_MAX : 0));
    return true;
  }
  return false;
}

bool encodeValue(std::string& out, const Value& value) {
  const Array* array = value.array();
  if (array == nullptr) return encodeScalar(out, value);
  out += static_cast<char>(arrayKind);
  appendVarint(out, array->size());
  for (const Value& element : *array) {
    if (!encodeScalar(out, element)) return false;
  }
  return true;
}

std::optional<Value> decodeScalar(ByteReader& reader, std::uint8_t kind) {
  if (kind == stringKind) {
    const std::string_view text = reader.text();
    return reader.ok() ? std::optional<Value>(text) : std::nullopt;
  }
  if (kind == integerKind) {
    const std::uint64_t bits = reader.varint();
    const std::uint64_t number = (bits >> 1U) ^ ((bits & 1U) != 0 ? UINT64_MAX : 0);
    return reader.ok() ? std::optional<Value>(static_cast<std::int64_t>(number)) : std::nullopt;
  }
  return std::nullopt;
}

std::optional<Value> decodeValue(ByteReader& reader) {
  const std::uint8_t kind = reader.byte();
  if (kind != arrayKind) return decodeScalar(reader, kind);
  Array array;
  for (std::uint64_t left = reader.varint(); left > 0; --left) {
    std::optional<Value> element = decodeScalar(reader, reader.byte());
    if (!element) return std::nullopt;
    array.push_back(std::move(*element));
  }
  return reader.ok() ? std::optional<Value>(std::move(array)) : std::nullopt;
}

}  // namespace

std::optional<std::string> encodeAnalysis(const IndexDescription& description) {
  std::string out(1, description.name ? '\1' : '\0');
  if (description.name) appendText(out, *description.name);
  appendVarint(out, description.analysisProperties.size());
  for (const auto& [key, value] : description.analysisProperties) {
    appendText(out, key);
    if (!encodeValue(out, value)) return std::nullopt;
  }
  return out;
}

IndexDescription decodeAnalysis(std::string_view section) {
  IndexDescription description;
  ByteReader reader(section);
  if (reader.byte() != 0) description.name = reader.text();
  for (std::uint64_t left = reader.varint(); left > 0; --left) {
    const std::string key(reader.text());
    std::optional<Value> value = decodeValue(reader);
    if (!value) break;
    description.analysisProperties.insert_or_assign(key, std::move(*value));
  }
  return description;
}

}  // namespace quorvex
