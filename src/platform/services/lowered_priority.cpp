#include "platform/lowered_priority.h"

#include <linux/ioprio.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvex {
namespace {

constexpr int lowestPriority = 19;

}  // namespace

bool lowerProcessPriority() {
  if (::setpriority(PRIO_PROCESS, 0, lowestPriority) != 0) return false;
  // glibc has no wrapper for this call.
  return ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, 0,
                   IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0)) == 0;
}

}  // namespace quorvex
