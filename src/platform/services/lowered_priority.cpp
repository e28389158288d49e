#include "platform/lowered_priority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvex {
namespace {

constexpr int lowestPriority = 19;

// The constants of ioprio_set(2), from the kernel's include/uapi/linux/ioprio.h. They are repeated
// here because that header is not always valid C++: 6.1.192 names a parameter "class". A priority
// is its class, above 13 bits of data that the idle class does not use.
constexpr int ioprioWhoProcess = 1;
constexpr int ioprioClassIdle = 3;
constexpr int ioprioClassShift = 13;

}  // namespace

bool lowerProcessPriority() {
  if (::setpriority(PRIO_PROCESS, 0, lowestPriority) != 0) return false;
  // glibc has no wrapper for this call.
  return ::syscall(SYS_ioprio_set, ioprioWhoProcess, 0, ioprioClassIdle << ioprioClassShift) == 0;
}

}  // namespace quorvex
