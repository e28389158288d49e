#include "platform/system_log.h"

#include <algorithm>
#include <cstddef>

#include <syslog.h>

namespace quorvex {
namespace {

constexpr std::size_t maximumMessageSize = 8192;

}  // namespace

void systemLog(std::string_view message) {
  // openlog keeps the pointer, so the name must be a literal.
  ::openlog("quorvex", 0, LOG_USER);
  const auto size = std::min(message.size(), maximumMessageSize);
  ::syslog(LOG_USER | LOG_ERR, "%.*s", static_cast<int>(size), message.data());
}

}  // namespace quorvex
