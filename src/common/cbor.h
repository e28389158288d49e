#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/allowed_kinds.h"
#include "common/result.h"
#include "common/value.h"

// The value tree as CBOR (RFC 8949): definite lengths only, UTF-8 strings, maps with unique string
// keys, no null, no tag except the one for objects. Output is deterministic (section 4.2.1):
// shortest forms, map keys ordered by their encoded bytes.
//
//   tree   = string / data / array / dictionary / number / object
//   object = #6.27([class name: tstr, { * tstr => tree }])

namespace quorvex {

inline constexpr std::uint64_t cborSelfDescribedTag = 55799;
inline constexpr std::uint64_t cborObjectTag = 27;
/// Every self-described item starts with these.
inline constexpr std::string_view cborSelfDescribedBytes = "\xD9\xD9\xF7";

/// Receives output in pieces that are valid only during the call. Returning false stops the work.
using ByteSink = std::function<bool(std::string_view)>;

/// A view of a dictionary's entries as written: keys that are not UTF-8 repaired, ordered by the
/// keys' encoded bytes.
class CborMapEntries {
 public:
  explicit CborMapEntries(const Dictionary& dictionary);
  CborMapEntries(const CborMapEntries&) = delete;
  CborMapEntries& operator=(const CborMapEntries&) = delete;

  std::size_t size() const { return _ordered.size(); }
  auto begin() const { return _ordered.begin(); }
  auto end() const { return _ordered.end(); }

 private:
  std::deque<std::string> _repaired;  ///< keys; a deque does not move them
  std::vector<std::pair<std::string_view, const Value*>> _ordered;
};

/// Writes items to a sink through a small buffer; long strings are not copied.
class CborWriter {
 public:
  explicit CborWriter(ByteSink sink) : _sink(std::move(sink)) {}

  void tag(std::uint64_t number);
  void arrayStart(std::size_t size);
  /// Keys and values must follow, with the keys in deterministic order.
  void mapStart(std::size_t size);
  void text(std::string_view text);
  void integer(std::int64_t number);
  void value(const Value& node);
  /// Adds the positions at which the entries begin to `starts`, if given.
  void value(const Dictionary& entries, std::vector<std::uint64_t>* starts = nullptr);

  /// Flushes the rest. Fails if the sink stopped the work, or if a value nested too deeply or
  /// contained an empty object.
  Status finish();

  /// The number of array elements, map keys and map values.
  std::uint64_t items() const { return _items; }
  /// The number of bytes written.
  std::uint64_t position() const { return _passed + _buffer.size(); }

 private:
  using HeadEncoder = std::size_t (*)(std::uint64_t, unsigned char*, std::size_t);

  void head(HeadEncoder encode, std::uint64_t number);
  void bytes(std::string_view bytes);
  void repairedText(const std::string& text);
  void real(double number);
  void boolean(bool flag);
  void array(const Array& elements);
  void object(const Value::Object& object);
  void flush();
  void pass(std::string_view bytes);
  bool enter();
  void fail(std::string reason);

  ByteSink _sink;
  std::string _buffer;
  std::uint64_t _passed = 0;  ///< bytes that the sink got
  unsigned _depth = 0;
  std::uint64_t _items = 0;
  Status _status = okStatus();
};

/// Reads items from the front of the input. After the first failure every later call fails too.
class CborReader {
 public:
  /// `bytes` must outlive the reader. Long data values in the trees share it.
  explicit CborReader(const Data& bytes) : CborReader(bytes.bytes()) { _owner = &bytes; }
  /// The viewed bytes must outlive the reader; the trees copy what they keep.
  explicit CborReader(std::string_view bytes) : _size(bytes.size()), _rest(bytes) {}

  bool atEnd() const { return _rest.empty(); }
  /// The unread bytes.
  std::string_view rest() const { return _rest; }

  // Each reads one item; false, with error() set, if the next item differs.
  bool takeTag(std::uint64_t number);
  bool takeArrayStart(std::size_t& size);
  bool takeMapStart(std::size_t& size);
  bool takeText(std::string_view& text);
  bool takeInteger(std::int64_t& number);
  /// Reads what precedes the content of a data value of `size` bytes.
  bool takeDataStart(std::uint64_t& size);

  /// Reads one item of any kind as raw bytes, in one step per nested item and without allocating.
  /// Checks neither its meaning nor whether its strings are UTF-8.
  bool takeItem(std::string_view& bytes);

  /// Reads a whole tree. Memory stays proportional to the actual bytes, whatever lengths they
  /// claim.
  Result<Value> takeValue(const AllowedKinds& kinds);

  /// Only after a failure.
  const Error& error() const { return _status.error(); }
  /// Fails with the caller's reason; returns false.
  bool refuse(std::string reason);

 private:
  friend class CborTreeBuilder;
  struct Item;

  bool decode(Item& item);
  bool next(Item& item);

  const Data* _owner = nullptr;
  std::size_t _size;  ///< in total
  std::string_view _rest;
  Status _status = okStatus();
};

}  // namespace quorvex
