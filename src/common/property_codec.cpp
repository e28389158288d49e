#include "common/property_codec.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

namespace quorvex {

namespace {

// Stored values; never change them.
enum class Kind : std::uint8_t { text = 1, integer, array, data, real, boolean };

std::optional<Kind> kindOf(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::string:
      return Kind::text;
    case Value::Kind::integer:
      return Kind::integer;
    case Value::Kind::array:
      return Kind::array;
    case Value::Kind::data:
      return Kind::data;
    case Value::Kind::real:
      return Kind::real;
    case Value::Kind::boolean:
      return Kind::boolean;
    case Value::Kind::dictionary:
    case Value::Kind::object:
      break;
  }
  return std::nullopt;
}

bool isScalar(const Value& value) {
  return value.array() == nullptr && kindOf(value);
}

void appendValue(std::string& out, const Value& value) {
  const std::optional<Kind> kind = kindOf(value);
  if (!kind) return;
  out += static_cast<char>(*kind);
  if (const std::string* text = value.string()) {
    appendText(out, *text);
  } else if (const std::int64_t* number = value.integer()) {
    const auto bits = static_cast<std::uint64_t>(*number);
    appendVarint(out, (bits << 1U) ^ (*number < 0 ? UINT64_MAX : 0));
  } else if (const Array* array = value.array()) {
    appendVarint(out, array->size());
    for (const Value& element : *array)
      appendValue(out, element);
  } else if (const Data* data = value.data()) {
    appendText(out, data->bytes());
  } else if (const double* real = value.real()) {
    appendU64(out, std::bit_cast<std::uint64_t>(*real));
  } else if (const bool* flag = value.boolean()) {
    out += *flag ? '\1' : '\0';
  }
}

std::optional<Value> readScalar(ByteReader& reader) {
  std::optional<Value> value;
  switch (static_cast<Kind>(reader.byte())) {
    case Kind::text:
      value = reader.text();
      break;
    case Kind::integer: {
      const std::uint64_t bits = reader.varint();
      value = static_cast<std::int64_t>((bits >> 1U) ^ ((bits & 1U) != 0 ? UINT64_MAX : 0));
      break;
    }
    case Kind::data:
      value = Data(std::string(reader.text()));
      break;
    case Kind::real:
      value = std::bit_cast<double>(reader.u64());
      break;
    case Kind::boolean:
      value = reader.byte() != 0;
      break;
    default:
      break;
  }
  return reader.ok() ? value : std::nullopt;
}

std::optional<Value> readValue(ByteReader& reader) {
  const std::string_view rest = reader.rest();
  if (rest.empty() || static_cast<Kind>(rest.front()) != Kind::array) return readScalar(reader);
  reader.byte();
  Array array;
  for (std::uint64_t left = reader.varint(); left > 0; --left) {
    std::optional<Value> element = readScalar(reader);
    if (!element) return std::nullopt;
    array.push_back(*std::move(element));
  }
  return reader.ok() ? std::optional<Value>(std::move(array)) : std::nullopt;
}

}  // namespace

bool isEncodable(const Value& value) {
  const Array* array = value.array();
  return array == nullptr ? isScalar(value) : std::ranges::all_of(*array, isScalar);
}

void appendProperties(std::string& out, const Dictionary& properties) {
  appendVarint(out, properties.size());
  for (const auto& [key, value] : properties) {
    appendText(out, key);
    appendValue(out, value);
  }
}

DecodedProperties readProperties(ByteReader& reader) {
  DecodedProperties decoded;
  for (std::uint64_t left = reader.varint(); left > 0; --left) {
    std::string key(reader.text());
    std::optional<Value> value = readValue(reader);
    if (!value) return decoded;
    decoded.properties.insert_or_assign(std::move(key), *std::move(value));
  }
  decoded.isComplete = reader.ok();
  return decoded;
}

}  // namespace quorvex
