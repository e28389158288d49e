#pragma once

#include <string_view>

namespace quorvex {

/// Logs an error message to syslog as "quorvex". Cuts it off after 8 KiB, because the log accepts
/// whole datagrams only, or at a NUL. Never fails; thread-safe.
void systemLog(std::string_view message);

}  // namespace quorvex
