#include "common/value.h"

#include <array>
#include <charconv>

namespace quorvex {

bool operator==(const Value& a, const Value& b) {
  const Value::Object* left = a.object();
  const Value::Object* right = b.object();
  if (left != nullptr && right != nullptr && *left != nullptr && *right != nullptr) {
    return *left == *right || ((*left)->className() == (*right)->className() &&
                               (*left)->archivedFields() == (*right)->archivedFields());
  }
  return a._node == b._node;
}

std::string_view kindName(Value::Kind kind) {
  static constexpr std::array<const char*, 8> names = {"string",  "data", "array",   "dictionary",
                                                       "integer", "real", "boolean", "object"};
  return names[static_cast<std::size_t>(kind)];
}

std::string kindName(const Value& value) {
  if (const Value::Object* object = value.object()) return std::string((*object)->className());
  return std::string(kindName(value.kind()));
}

namespace {

template <typename Number>
std::string numberText(Number number) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  return {buffer.data(), end};
}

void append(std::string& out, const Value& value, std::size_t depth);

void appendEntries(std::string& out, const Dictionary& dictionary, std::size_t depth) {
  out += "{\n";
  for (const auto& [key, entry] : dictionary) {
    out.append(4 * (depth + 1), ' ').append(key).append(" = ");
    append(out, entry, depth + 1);
    out += ";\n";
  }
  out.append(4 * depth, ' ') += '}';
}

void appendElements(std::string& out, const Array& array, std::size_t depth) {
  out += "(\n";
  for (std::size_t i = 0; i < array.size(); ++i) {
    out.append(4 * (depth + 1), ' ');
    append(out, array[i], depth + 1);
    out += i + 1 < array.size() ? ",\n" : "\n";
  }
  out.append(4 * depth, ' ') += ')';
}

void append(std::string& out, const Value& value, std::size_t depth) {
  switch (value.kind()) {
    case Value::Kind::string:
      out += *value.string();
      break;
    case Value::Kind::data:
      out += "<" + numberText(value.data()->size()) + " bytes>";
      break;
    case Value::Kind::array:
      appendElements(out, *value.array(), depth);
      break;
    case Value::Kind::dictionary:
      appendEntries(out, *value.dictionary(), depth);
      break;
    case Value::Kind::integer:
      out += numberText(*value.integer());
      break;
    case Value::Kind::real:
      out += numberText(*value.real());
      break;
    case Value::Kind::boolean:
      out += *value.boolean() ? '1' : '0';
      break;
    case Value::Kind::object:
      out.append((*value.object())->className()) += ' ';
      appendEntries(out, (*value.object())->archivedFields(), depth);
      break;
  }
}

}  // namespace

std::string describe(const Value& value) {
  std::string out;
  append(out, value, 0);
  return out;
}

const Value* find(const Dictionary& dictionary, std::string_view key) {
  const auto entry = dictionary.find(key);
  return entry == dictionary.end() ? nullptr : &entry->second;
}

}  // namespace quorvex
