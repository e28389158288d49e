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

// The value tree as CBOR (RFC 8949): definite lengths only, strings that are UTF-8, maps whose keys
// are strings and stand once, no null, no tag but the one for objects. What is written is
// deterministic (section 4.2.1): shortest forms, keys of a map in the order of their encoded bytes.
//
//   tree   = string / data / array / dictionary / number / object
//   object = #6.27([class name: tstr, { * tstr => tree }])

namespace quorvex {

inline constexpr std::uint64_t cborSelfDescribedTag = 55799;
inline constexpr std::uint64_t cborObjectTag = 27;
/// What every self-described item begins with.
inline constexpr std::string_view cborSelfDescribedBytes = "\xD9\xD9\xF7";

/// Takes bytes as they are made, in pieces that live only during the call. False ends the work.
using ByteSink = std::function<bool(std::string_view)>;

/// The entries of a dictionary as they are written: keys that are not UTF-8 repaired, in the order
/// of the keys' encoded bytes. Views the dictionary.
class CborMapEntries {
 public:
  explicit CborMapEntries(const Dictionary& dictionary);
  CborMapEntries(const CborMapEntries&) = delete;
  CborMapEntries& operator=(const CborMapEntries&) = delete;

  std::size_t size() const { return _ordered.size(); }
  auto begin() const { return _ordered.begin(); }
  auto end() const { return _ordered.end(); }

 private:
  std::deque<std::string> _repaired;  ///< keys; its elements stay where they are
  std::vector<std::pair<std::string_view, const Value*>> _ordered;
};

/// Writes items to a sink through a small buffer; long strings go out without being copied.
class CborWriter {
 public:
  enum class Objects { tagged, refused };

  explicit CborWriter(ByteSink sink, Objects objects = Objects::tagged)
      : _sink(std::move(sink)), _objects(objects) {}

  void tag(std::uint64_t number);
  void arrayStart(std::size_t size);
  /// Keys and values follow, keys in the order that deterministic encoding asks for.
  void mapStart(std::size_t size);
  void text(std::string_view text);
  void integer(std::int64_t number);
  void value(const Value& node);
  void value(const Dictionary& entries);

  /// Hands over what is left. Fails when the sink ended the work, or when a value nests too deeply
  /// or holds an object that is empty or refused.
  Status finish();

  /// The elements of all arrays, and the keys and values of all maps.
  std::uint64_t items() const { return _items; }

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
  bool enter();
  void fail(std::string reason);

  ByteSink _sink;
  Objects _objects;
  std::string _buffer;
  unsigned _depth = 0;
  std::uint64_t _items = 0;
  Status _status = okStatus();
};

/// Reads items from the front of a text. The first failure stays: every later call fails as well.
class CborReader {
 public:
  /// `bytes` must outlive the reader. Long data values of the trees share it.
  explicit CborReader(const Data& bytes) : CborReader(bytes.bytes()) { _owner = &bytes; }
  /// The viewed bytes must outlive the reader; the trees copy what they keep.
  explicit CborReader(std::string_view bytes) : _size(bytes.size()), _rest(bytes) {}

  /// Whether nothing is left.
  bool atEnd() const { return _rest.empty(); }
  /// What is left.
  std::string_view rest() const { return _rest; }

  // One item each; false, with error() set, when the next item is another one.
  bool takeTag(std::uint64_t number);
  bool takeArrayStart(std::size_t& size);
  bool takeMapStart(std::size_t& size);
  bool takeText(std::string_view& text);
  bool takeInteger(std::int64_t& number);

  /// A whole item of any kind as its bytes, in a step for each item inside and without memory. What
  /// the item means is not looked at, nor whether its strings are UTF-8.
  bool takeItem(std::string_view& bytes);

  /// A whole tree. Memory stays in proportion to the bytes that are there, whatever lengths they
  /// claim.
  Result<Value> takeValue(const AllowedKinds& kinds);

  /// Only after a failure.
  const Error& error() const { return _status.error(); }
  /// Makes a failure of what the caller found; false.
  bool refuse(std::string reason);

 private:
  friend class CborTreeBuilder;
  struct Item;

  bool decode(Item& item);
  bool next(Item& item);

  const Data* _owner = nullptr;
  std::size_t _size;  ///< of the whole
  std::string_view _rest;
  Status _status = okStatus();
};

}  // namespace quorvex
