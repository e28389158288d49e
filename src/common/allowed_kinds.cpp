#include "common/allowed_kinds.h"

namespace quorvex {

namespace {

constexpr unsigned kindCount = static_cast<unsigned>(Value::Kind::object) + 1;

}  // namespace

AllowedKinds::AllowedKinds(std::initializer_list<std::string_view> kinds) {
  for (unsigned kind = 0; kind < kindCount; ++kind) {
    for (const std::string_view name : kinds) {
      if (name == kindName(static_cast<Value::Kind>(kind))) _kinds |= 1U << kind;
    }
  }
}

AllowedKinds AllowedKinds::values() {
  AllowedKinds kinds;
  kinds._kinds = (1U << static_cast<unsigned>(Value::Kind::object)) - 1;
  return kinds;
}

AllowedKinds& AllowedKinds::allowClass(std::string_view className, Decoder decoder, Place place) {
  _classes.insert_or_assign(std::string(className), std::pair(std::move(decoder), place));
  return *this;
}

const AllowedKinds::Decoder* AllowedKinds::decoder(std::string_view className,
                                                   bool inObject) const {
  const auto entry = _classes.find(className);
  if (entry == _classes.end()) return nullptr;
  const auto& [decoder, place] = entry->second;
  return inObject || place == Place::anywhere ? &decoder : nullptr;
}

}  // namespace quorvex
