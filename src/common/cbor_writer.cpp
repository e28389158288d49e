#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include <cbor.h>

#include "common/cbor.h"
#include "common/key_repair.h"
#include "common/nesting.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;
/// Strings of this size or more bypass the buffer.
constexpr std::size_t longString = std::size_t{16} * 1024;
constexpr std::size_t maximumHead = 9;

/// Orders keys as encoded: the length comes first.
bool deterministicLess(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

/// Encodes in the shortest of the three forms that preserves the number.
std::size_t encodeReal(double number, unsigned char* out) {
  if (std::isnan(number)) return cbor_encode_half(NAN, out, maximumHead);
  const bool inRange = std::isinf(number) || std::abs(number) <= std::numeric_limits<float>::max();
  const float single = inRange ? static_cast<float>(number) : 0;
  if (static_cast<double>(single) != number) return cbor_encode_double(number, out, maximumHead);
  const std::size_t size = cbor_encode_half(single, out, maximumHead);
  float read = 0;
  cbor_callbacks callbacks = cbor_empty_callbacks;
  callbacks.float2 = [](void* context, float half) { *static_cast<float*>(context) = half; };
  const cbor_decoder_result decoded = cbor_stream_decode(out, size, &callbacks, &read);
  const bool same = decoded.status == CBOR_DECODER_FINISHED &&
                    std::bit_cast<std::uint32_t>(read) == std::bit_cast<std::uint32_t>(single);
  if (same) return size;  // including the sign of zero
  return cbor_encode_single(single, out, maximumHead);
}

}  // namespace

CborMapEntries::CborMapEntries(const Dictionary& dictionary) {
  RepairedKeys claims(dictionary);
  _ordered.reserve(dictionary.size());
  for (const auto& [key, entry] : dictionary) {
    std::string_view written = key;
    if (!isValidUtf8(key)) {
      written = _repaired.emplace_back(validUtf8(key));
      if (!claims.claim(_repaired.back())) continue;
    }
    _ordered.emplace_back(written, &entry);
  }
  std::ranges::sort(_ordered, deterministicLess, [](const auto& entry) { return entry.first; });
}

void CborWriter::fail(std::string reason) {
  if (_status) _status = Error{std::move(reason)};
}

void CborWriter::pass(std::string_view bytes) {
  _passed += bytes.size();
  if (_status && !bytes.empty() && !_sink(bytes)) fail("The output could not be written");
}

void CborWriter::flush() {
  pass(_buffer);
  _buffer.clear();
}

Status CborWriter::finish() {
  flush();
  return _status;
}

void CborWriter::head(HeadEncoder encode, std::uint64_t number) {
  std::array<unsigned char, maximumHead> bytes{};
  const std::size_t size = encode(number, bytes.data(), bytes.size());
  _buffer.append(reinterpret_cast<const char*>(bytes.data()), size);
  if (_buffer.size() >= bufferSize) flush();
}

void CborWriter::bytes(std::string_view bytes) {
  if (bytes.size() < longString) {
    _buffer += bytes;
    return;
  }
  flush();
  pass(bytes);
}

void CborWriter::tag(std::uint64_t number) {
  head(cbor_encode_tag, number);
}
void CborWriter::arrayStart(std::size_t size) {
  _items += size;
  head(cbor_encode_array_start, size);
}
void CborWriter::mapStart(std::size_t size) {
  _items += 2 * size;
  head(cbor_encode_map_start, size);
}

void CborWriter::text(std::string_view text) {
  head(cbor_encode_string_start, text.size());
  bytes(text);
}

void CborWriter::repairedText(const std::string& string) {
  isValidUtf8(string) ? text(string) : text(validUtf8(string));
}

void CborWriter::integer(std::int64_t number) {
  if (number >= 0) return head(cbor_encode_uint, static_cast<std::uint64_t>(number));
  head(cbor_encode_negint, static_cast<std::uint64_t>(-(number + 1)));
}

void CborWriter::real(double number) {
  std::array<unsigned char, maximumHead> bytes{};
  const std::size_t size = encodeReal(number, bytes.data());
  _buffer.append(reinterpret_cast<const char*>(bytes.data()), size);
}

/// Descends one level; false after any failure. The caller decrements _depth in either case.
bool CborWriter::enter() {
  if (++_depth > maximumNesting) fail("Nested too deeply");
  return _status.ok();
}

void CborWriter::boolean(bool flag) {
  head([](std::uint64_t value, unsigned char* out,
          std::size_t room) { return cbor_encode_bool(value != 0, out, room); },
       flag ? 1 : 0);
}

void CborWriter::value(const Value& node) {
  if (const std::string* string = node.string()) return repairedText(*string);
  if (const Data* data = node.data()) {
    head(cbor_encode_bytestring_start, data->size());
    return bytes(data->bytes());
  }
  if (const Array* elements = node.array()) return array(*elements);
  if (const Dictionary* entries = node.dictionary()) return value(*entries);
  if (const std::int64_t* number = node.integer()) return integer(*number);
  if (const double* number = node.real()) return real(*number);
  if (const bool* flag = node.boolean()) return boolean(*flag);
  if (const Value::Object* held = node.object()) object(*held);
}

void CborWriter::array(const Array& elements) {
  if (enter()) {
    arrayStart(elements.size());
    for (const Value& element : elements)
      value(element);
  }
  --_depth;
}

void CborWriter::value(const Dictionary& entries, std::vector<std::uint64_t>* starts) {
  if (enter()) {
    const CborMapEntries written(entries);
    mapStart(written.size());
    for (const auto& [key, entry] : written) {
      if (starts != nullptr) starts->push_back(position());
      text(key);
      value(*entry);
    }
  }
  --_depth;
}

void CborWriter::object(const Value::Object& object) {
  if (object == nullptr) return fail("An empty object cannot be written");
  if (enter()) {
    tag(cborObjectTag);
    arrayStart(2);
    text(object->className());
    value(object->archivedFields());
  }
  --_depth;
}

}  // namespace quorvex
