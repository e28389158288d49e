#include <algorithm>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include <cbor.h>

#include "common/cbor.h"
#include "common/nesting.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr unsigned objectLevels = 2;  ///< its array and the map inside
/// Data values of this size or more share their source bytes.
constexpr std::size_t longData = std::size_t{64} * 1024;

}  // namespace

struct CborReader::Item {
  enum class Type { number, negative, bytes, text, array, map, tag, real, boolean, unsupported };

  Type type = Type::unsupported;
  std::uint64_t number = 0;  ///< also array or map size, or a boolean
  std::string_view content;
  double real = 0;

  void set(Type newType, std::uint64_t newNumber) {
    type = newType;
    number = newNumber;
  }
};

namespace {

template <typename Item, auto type, typename Number>
void onNumber(void* context, Number number) {
  static_cast<Item*>(context)->set(type, number);
}

template <typename Item, auto type>
void onContent(void* context, cbor_data bytes, std::size_t size) {
  auto& item = *static_cast<Item*>(context);
  item.type = type;
  item.content = {reinterpret_cast<const char*>(bytes), size};
}

template <typename Item, typename Number>
void onReal(void* context, Number number) {
  auto& item = *static_cast<Item*>(context);
  item.type = Item::Type::real;
  item.real = static_cast<double>(number);
}

/// Items without a callback (indefinite lengths, null, undefined) stay unsupported.
template <typename Item>
cbor_callbacks itemCallbacks() {
  using Type = typename Item::Type;
  cbor_callbacks callbacks = cbor_empty_callbacks;
  callbacks.uint8 = onNumber<Item, Type::number, std::uint8_t>;
  callbacks.uint16 = onNumber<Item, Type::number, std::uint16_t>;
  callbacks.uint32 = onNumber<Item, Type::number, std::uint32_t>;
  callbacks.uint64 = onNumber<Item, Type::number, std::uint64_t>;
  callbacks.negint8 = onNumber<Item, Type::negative, std::uint8_t>;
  callbacks.negint16 = onNumber<Item, Type::negative, std::uint16_t>;
  callbacks.negint32 = onNumber<Item, Type::negative, std::uint32_t>;
  callbacks.negint64 = onNumber<Item, Type::negative, std::uint64_t>;
  callbacks.byte_string = onContent<Item, Type::bytes>;
  callbacks.string = onContent<Item, Type::text>;
  callbacks.array_start = onNumber<Item, Type::array, std::size_t>;
  callbacks.map_start = onNumber<Item, Type::map, std::size_t>;
  callbacks.tag = onNumber<Item, Type::tag, std::uint64_t>;
  callbacks.float2 = onReal<Item, float>;
  callbacks.float4 = onReal<Item, float>;
  callbacks.float8 = onReal<Item, double>;
  callbacks.boolean = onNumber<Item, Type::boolean, bool>;
  return callbacks;
}

}  // namespace

bool CborReader::refuse(std::string reason) {
  if (_status) {
    _status = Error{"At byte " + std::to_string(_size - _rest.size()) + ": " + std::move(reason)};
  }
  return false;
}

bool CborReader::decode(Item& item) {
  static const cbor_callbacks callbacks = itemCallbacks<Item>();
  if (!_status) return false;
  item.type = Item::Type::unsupported;
  const cbor_decoder_result result = cbor_stream_decode(reinterpret_cast<cbor_data>(_rest.data()),
                                                        _rest.size(), &callbacks, &item);
  if (result.status == CBOR_DECODER_NEDATA) return refuse("Unexpected end of data");
  if (result.status != CBOR_DECODER_FINISHED || item.type == Item::Type::unsupported) {
    return refuse("Unexpected item");
  }
  _rest.remove_prefix(result.read);
  return true;
}

bool CborReader::next(Item& item) {
  const std::string_view before = _rest;
  if (!decode(item)) return false;
  if (item.type != Item::Type::text || isValidUtf8(item.content)) return true;
  _rest = before;
  return refuse("A string is not UTF-8");
}

bool CborReader::takeTag(std::uint64_t number) {
  Item item;
  if (!next(item)) return false;
  return (item.type == Item::Type::tag && item.number == number) || refuse("Unexpected tag");
}

bool CborReader::takeArrayStart(std::size_t& size) {
  Item item;
  if (!next(item)) return false;
  size = item.number;
  return item.type == Item::Type::array || refuse("Not an array");
}

bool CborReader::takeMapStart(std::size_t& size) {
  Item item;
  if (!next(item)) return false;
  size = item.number;
  return item.type == Item::Type::map || refuse("Not a map");
}

bool CborReader::takeText(std::string_view& text) {
  Item item;
  if (!next(item)) return false;
  text = item.content;
  return item.type == Item::Type::text || refuse("Not a string");
}

bool CborReader::takeInteger(std::int64_t& number) {
  Item item;
  if (!next(item)) return false;
  number = static_cast<std::int64_t>(item.number);
  return (item.type == Item::Type::number && number >= 0) || refuse("Not a non-negative integer");
}

/// By hand, since the decoder wants the content too.
bool CborReader::takeDataStart(std::uint64_t& size) {
  constexpr unsigned majorOfData = 2;
  constexpr unsigned shortSizes = 24;
  constexpr unsigned largestForm = 27;
  if (!_status) return false;
  const unsigned first = _rest.empty() ? 0 : static_cast<unsigned char>(_rest.front());
  const unsigned form = first & 31U;
  if (first >> 5U != majorOfData || form > largestForm) return refuse("Not data");
  const std::size_t width = form < shortSizes ? 0 : std::size_t{1} << (form - shortSizes);
  if (_rest.size() <= width) return refuse("Unexpected end of data");
  size = form < shortSizes ? form : 0;
  for (const char byte : _rest.substr(1, width))
    size = size << 8U | static_cast<unsigned char>(byte);
  _rest.remove_prefix(1 + width);
  return true;
}

bool CborReader::takeItem(std::string_view& bytes) {
  const std::string_view before = _rest;
  Item item;
  for (std::uint64_t owed = 1; owed > 0; --owed) {
    if (!decode(item)) return false;
    switch (item.type) {
      case Item::Type::tag:
        ++owed;
        break;
      case Item::Type::array:
      case Item::Type::map:
        // Each nested item takes at least one byte.
        if (item.number > _rest.size()) return refuse("A length exceeds the remaining bytes");
        owed += item.type == Item::Type::map ? 2 * item.number : item.number;
        break;
      default:
        break;
    }
  }
  bytes = before.substr(0, before.size() - _rest.size());
  return true;
}

/// Builds one tree without recursion.
class CborTreeBuilder {
 public:
  CborTreeBuilder(CborReader& reader, const AllowedKinds& kinds) : _reader(reader), _kinds(kinds) {}

  Result<Value> build();

 private:
  using Item = CborReader::Item;

  /// An incomplete container.
  struct Open {
    Value::Kind kind;
    std::uint64_t left;  ///< elements or entries still to come
    const AllowedKinds::Decoder* decoder = nullptr;
    Array elements;
    Dictionary entries;
    std::string key;
  };

  bool step();
  bool takeKey(Open& dictionary);
  bool startObject();
  bool open(Value::Kind kind, std::uint64_t size, const AllowedKinds::Decoder* decoder);
  std::optional<Value> leaf(const Item& item);
  std::optional<Value> close(Open& open);
  bool attach(Value value);
  bool allow(Value::Kind kind);

  CborReader& _reader;
  const AllowedKinds& _kinds;
  std::vector<Open> _open;
  unsigned _depth = 0;
  std::uint64_t _owed = 0;   ///< items still due in open containers, each at least a byte
  std::uint64_t _items = 0;  ///< promised so far
  Value _root = false;
  bool _complete = false;
};

Result<Value> CborTreeBuilder::build() {
  while (!_complete) {
    if (!step()) return _reader.error();
  }
  return std::move(_root);
}

bool CborTreeBuilder::allow(Value::Kind kind) {
  return _kinds.allows(kind) ||
         _reader.refuse("A value of kind " + std::string(kindName(kind)) + " is not allowed");
}

bool CborTreeBuilder::takeKey(Open& dictionary) {
  std::string_view key;
  if (!_reader.takeText(key)) return false;
  if (dictionary.entries.contains(key)) {
    return _reader.refuse("Duplicate key: " + std::string(key));
  }
  dictionary.key = key;
  --_owed;
  return true;
}

bool CborTreeBuilder::step() {
  if (!_open.empty()) {
    Open& parent = _open.back();
    if (parent.kind != Value::Kind::array && !takeKey(parent)) return false;
    --parent.left;
    --_owed;
  }
  Item item;
  if (!_reader.next(item)) return false;
  switch (item.type) {
    case Item::Type::array:
      return allow(Value::Kind::array) && open(Value::Kind::array, item.number, nullptr);
    case Item::Type::map:
      return allow(Value::Kind::dictionary) && open(Value::Kind::dictionary, item.number, nullptr);
    case Item::Type::tag:
      return item.number == cborObjectTag ? startObject() : _reader.refuse("Unknown tag");
    default:
      break;
  }
  std::optional<Value> value = leaf(item);
  return value && attach(*std::move(value));
}

std::optional<Value> CborTreeBuilder::leaf(const Item& item) {
  constexpr auto maximum = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  std::optional<Value> value;
  switch (item.type) {
    case Item::Type::text:
      value = Value(item.content);
      break;
    case Item::Type::bytes:
      value = Value(_reader._owner != nullptr && item.content.size() >= longData
                        ? _reader._owner->part(item.content)
                        : Data(std::string(item.content)));
      break;
    case Item::Type::real:
      value = Value(item.real);
      break;
    case Item::Type::boolean:
      value = Value(item.number != 0);
      break;
    default:
      if (item.number > maximum) {
        _reader.refuse("Integer out of range");
        return std::nullopt;
      }
      const auto number = static_cast<std::int64_t>(item.number);
      value = Value(item.type == Item::Type::number ? number : -1 - number);
  }
  if (!allow(value->kind())) return std::nullopt;
  return value;
}

bool CborTreeBuilder::startObject() {
  std::size_t size = 0;
  std::string_view className;
  if (!_reader.takeArrayStart(size)) return false;
  if (size != 2) return _reader.refuse("Malformed object");
  if (!_reader.takeText(className)) return false;
  const bool inObject = !_open.empty() && _open.back().kind == Value::Kind::object;
  const AllowedKinds::Decoder* decoder = _kinds.decoder(className, inObject);
  if (decoder == nullptr) {
    return _reader.refuse("An object of class " + std::string(className) + " is not allowed");
  }
  return _reader.takeMapStart(size) && open(Value::Kind::object, size, decoder);
}

bool CborTreeBuilder::open(Value::Kind kind, std::uint64_t size,
                           const AllowedKinds::Decoder* decoder) {
  _depth += kind == Value::Kind::object ? objectLevels : 1;
  if (_depth > maximumNesting) return _reader.refuse("Nested too deeply");
  const std::uint64_t room =
      _reader._rest.size() - std::min<std::uint64_t>(_owed, _reader._rest.size());
  const std::uint64_t perEntry = kind == Value::Kind::array ? 1 : 2;
  if (size > room / perEntry) return _reader.refuse("A length exceeds the remaining bytes");
  _owed += size * perEntry;
  _items += size * perEntry;
  if (_items > _kinds.mostNodes()) return _reader.refuse("Too many items");
  _open.push_back({kind, size, decoder, {}, {}, {}});
  if (kind == Value::Kind::array) _open.back().elements.reserve(size);
  if (size > 0) return true;
  std::optional<Value> empty = close(_open.back());
  return empty && attach(*std::move(empty));
}

/// Closes the innermost container; returns its value.
std::optional<Value> CborTreeBuilder::close(Open& open) {
  Open closed = std::move(open);
  _open.pop_back();
  _depth -= closed.kind == Value::Kind::object ? objectLevels : 1;
  if (closed.kind == Value::Kind::array) return Value(std::move(closed.elements));
  if (closed.kind == Value::Kind::dictionary) return Value(std::move(closed.entries));
  Result<Value::Object> object = (*closed.decoder)(std::move(closed.entries));
  if (!object) {
    _reader.refuse(object.error().description);
    return std::nullopt;
  }
  return Value(*std::move(object));
}

/// Adds a value to the innermost container, and each container that this completes to its parent.
bool CborTreeBuilder::attach(Value value) {
  while (!_open.empty()) {
    Open& parent = _open.back();
    if (parent.kind == Value::Kind::array) {
      parent.elements.push_back(std::move(value));
    } else {
      parent.entries.emplace_hint(parent.entries.end(), std::move(parent.key), std::move(value));
    }
    if (parent.left > 0) return true;
    std::optional<Value> closed = close(parent);
    if (!closed) return false;
    value = *std::move(closed);
  }
  _root = std::move(value);
  _complete = true;
  return true;
}

Result<Value> CborReader::takeValue(const AllowedKinds& kinds) {
  return CborTreeBuilder(*this, kinds).build();
}

}  // namespace quorvex
