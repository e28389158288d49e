#pragma once

#include <optional>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/notification_center.h"

namespace quorvex {

// A notification is one broadcast signal with the signature ssa{sv}: name, sender, user info.
inline constexpr const char* notificationPath = "/com/corvane/DistributedNotificationCenter";
inline constexpr const char* notificationInterface = "com.corvane.DistributedNotificationCenter";
inline constexpr const char* notificationSignal = "Notification";

/// Writes the arguments: integers as x, reals as d, strings as s, booleans as b; other kinds of
/// user info are left out. Throws sdbus::Error on text that the bus does not carry.
void writeNotification(const Notification& notification, sdbus::Signal& signal);

/// Reads them back. User info of other types is left out; a message of another signature is
/// nothing.
std::optional<Notification> readNotification(sdbus::Message& message);

}  // namespace quorvex
