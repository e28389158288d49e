#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "common/lazy_bytes.h"

namespace quorvex {

/// An immutable byte sequence, shared by its copies.
class Data {
 public:
  Data() : Data(std::string()) {}
  explicit Data(std::string bytes) : Data(std::make_shared<const std::string>(std::move(bytes))) {}
  explicit Data(const std::shared_ptr<const std::string>& bytes)
      : _owner(bytes), _bytes(std::string_view(*bytes)) {}
  /// Bytes that live as long as their owner.
  Data(std::shared_ptr<const void> owner, const LazyBytes& bytes)
      : _owner(std::move(owner)), _bytes(bytes) {}

  /// Unpacks all bytes of lazy data; empty if they are damaged.
  std::string_view bytes() const { return _bytes.all(); }
  LazyBytes lazyBytes() const { return _bytes; }
  std::size_t size() const { return _bytes.size(); }
  bool empty() const { return _bytes.empty(); }

  /// Returns a part, given as a view into bytes(). It shares the whole and keeps it alive.
  Data part(std::string_view bytes) const { return {_owner, LazyBytes(bytes, _bytes.residency())}; }
  /// Returns a part that is not unpacked yet if this is lazy.
  Data lazyPart(std::size_t offset, std::size_t size) const {
    return {_owner, _bytes.sub(offset, size)};
  }

  friend bool operator==(const Data& a, const Data& b) { return a.bytes() == b.bytes(); }

 private:
  std::shared_ptr<const void> _owner;
  LazyBytes _bytes;
};

class Value;
using Array = std::vector<Value>;
/// Iterated in byte order of the keys, so output from it is deterministic.
using Dictionary = std::map<std::string, Value, std::less<>>;

/// An object of a class unknown to the tree, represented by class name and fields. Archives write
/// it as a tagged object and rebuild it through a decoder registered for its class.
class ArchivableObject {
 public:
  ArchivableObject() = default;
  ArchivableObject(const ArchivableObject&) = default;
  ArchivableObject& operator=(const ArchivableObject&) = default;
  virtual ~ArchivableObject() = default;

  virtual std::string_view className() const = 0;
  virtual Dictionary archivedFields() const = 0;
};

/// A node of the tree in index files and keyed documents. There is no null: a dictionary simply
/// lacks an absent entry.
class Value {
 public:
  using Object = std::shared_ptr<const ArchivableObject>;
  enum class Kind { string, data, array, dictionary, integer, real, boolean, object };

  // Implicit conversions let trees be written like literals.
  // NOLINTBEGIN(google-explicit-constructor)
  Value(std::string text) : _node(std::move(text)) {}
  Value(std::string_view text) : _node(std::string(text)) {}
  Value(const char* text) : _node(std::string(text)) {}
  Value(Data data) : _node(std::move(data)) {}
  Value(Array array) : _node(std::move(array)) {}
  Value(Dictionary dictionary) : _node(std::move(dictionary)) {}
  Value(std::int64_t number) : _node(number) {}
  Value(int number) : _node(std::int64_t{number}) {}
  Value(double number) : _node(number) {}
  Value(bool flag) : _node(flag) {}
  Value(Object object) : _node(std::move(object)) {}
  // NOLINTEND(google-explicit-constructor)

  Kind kind() const { return static_cast<Kind>(_node.index()); }

  /// Returns the content if the node is of that kind, else null; valid while the node lives.
  const std::string* string() const { return std::get_if<std::string>(&_node); }
  std::string* string() { return std::get_if<std::string>(&_node); }
  const Data* data() const { return std::get_if<Data>(&_node); }
  const Array* array() const { return std::get_if<Array>(&_node); }
  Array* array() { return std::get_if<Array>(&_node); }
  const Dictionary* dictionary() const { return std::get_if<Dictionary>(&_node); }
  Dictionary* dictionary() { return std::get_if<Dictionary>(&_node); }
  const std::int64_t* integer() const { return std::get_if<std::int64_t>(&_node); }
  const double* real() const { return std::get_if<double>(&_node); }
  const bool* boolean() const { return std::get_if<bool>(&_node); }
  const Object* object() const { return std::get_if<Object>(&_node); }

  /// Objects compare by class name and fields, everything else by content.
  friend bool operator==(const Value& a, const Value& b);

 private:
  std::variant<std::string, Data, Array, Dictionary, std::int64_t, double, bool, Object> _node;
};

/// "string", "data", "array", "dictionary", "integer", "real", "boolean", "object".
std::string_view kindName(Value::Kind kind);
/// The name of its kind; for an object, its class name.
std::string kindName(const Value& value);

/// Formats the tree for messages: strings verbatim, arrays in parentheses, dictionaries in braces,
/// one entry per line.
std::string describe(const Value& value);

/// Returns the entry under `key`, or null.
const Value* find(const Dictionary& dictionary, std::string_view key);

}  // namespace quorvex
