#include "platform/process_handle.h"

#include <cerrno>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvex {

// By number, as Debian 12's header does not declare these calls for C++.
ProcessHandle::ProcessHandle(pid_t process)
    : _descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))),
      _missing(_descriptor < 0 && errno == ESRCH) {}

ProcessHandle::~ProcessHandle() {
  if (_descriptor >= 0) ::close(_descriptor);
}

bool ProcessHandle::ended() const {
  if (_descriptor < 0) return _missing;
  pollfd entry{_descriptor, POLLIN, 0};
  return ::poll(&entry, 1, 0) > 0;
}

bool ProcessHandle::sendSignal(int signal) const {
  return _descriptor >= 0 && ::syscall(SYS_pidfd_send_signal, _descriptor, signal, nullptr, 0) == 0;
}

}  // namespace quorvex
