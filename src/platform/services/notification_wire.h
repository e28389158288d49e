#pragma once

#include "platform/session_bus.h"

namespace quorvex {

/// A notification is one broadcast signal with the signature ssa{sv}: name, sender, user info.
inline constexpr BusSignal notificationSignal{"/com/corvane/DistributedNotificationCenter",
                                              "com.corvane.DistributedNotificationCenter",
                                              "Notification"};
inline constexpr const char* notificationSignature = "ssa{sv}";

}  // namespace quorvex
