#include "platform/services/notification_wire.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace quorvex {
namespace {

template <typename T>
void writeEntry(sdbus::Signal& signal, const std::string& key, const char* type, const T& value) {
  signal.openDictEntry("sv");
  signal << key;
  signal.openVariant(type);
  signal << value;
  signal.closeVariant();
  signal.closeDictEntry();
}

std::optional<Value> readVariant(const sdbus::Variant& variant) {
  const std::string type = variant.peekValueType();
  if (type == "s") return Value(variant.get<std::string>());
  if (type == "d") return Value(variant.get<double>());
  if (type == "b") return Value(variant.get<bool>());
  if (type == "x") return Value(variant.get<std::int64_t>());
  if (type == "i") return Value(std::int64_t{variant.get<std::int32_t>()});
  if (type == "u") return Value(std::int64_t{variant.get<std::uint32_t>()});
  return std::nullopt;
}

}  // namespace

void writeNotification(const Notification& notification, sdbus::Signal& signal) {
  signal << notification.name << notification.sender;
  signal.openContainer("{sv}");
  for (const auto& [key, value] : notification.userInfo) {
    if (const auto* text = value.string()) {
      writeEntry(signal, key, "s", *text);
    } else if (const auto* integer = value.integer()) {
      writeEntry(signal, key, "x", *integer);
    } else if (const auto* real = value.real()) {
      writeEntry(signal, key, "d", *real);
    } else if (const auto* flag = value.boolean()) {
      writeEntry(signal, key, "b", *flag);
    }
  }
  signal.closeContainer();
}

std::optional<Notification> readNotification(sdbus::Message& message) {
  try {
    Notification notification;
    std::map<std::string, sdbus::Variant> userInfo;
    message >> notification.name >> notification.sender >> userInfo;
    if (!message) return std::nullopt;
    for (const auto& [key, variant] : userInfo) {
      if (auto value = readVariant(variant)) notification.userInfo.emplace(key, *std::move(value));
    }
    return notification;
  } catch (const sdbus::Error&) {
    return std::nullopt;
  }
}

}  // namespace quorvex
