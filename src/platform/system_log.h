#pragma once

#include <string_view>

namespace quorvex {

/// Sends one error message to the system log under the name "quorvex". Text beyond 8 KiB, or behind
/// a NUL, is cut off, because the log takes whole datagrams only. Never fails; safe from several
/// threads.
void systemLog(std::string_view message);

}  // namespace quorvex
