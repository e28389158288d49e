#include "common/open_below.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "common/retry.h"

namespace quorvex {

Descriptor openBelow(int folder, const std::string& path, int flags) {
  open_how request{};
  request.flags = static_cast<decltype(request.flags)>(flags);
  request.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  const auto opened = retried([&] {
    return static_cast<int>(::syscall(SYS_openat2, folder, path.c_str(), &request, sizeof request));
  });
  if (opened >= 0 || (errno != ENOSYS && errno != EPERM)) return Descriptor(opened);

  Descriptor at(-1);
  std::string_view rest = path;
  for (;;) {
    const std::size_t slash = rest.find('/');
    const std::string name(rest.substr(0, slash));
    const int base = at ? at.get() : folder;
    const int how = (slash == rest.npos ? flags : O_PATH | O_CLOEXEC | O_DIRECTORY) | O_NOFOLLOW;
    if (name == "..") {
      errno = EXDEV;
      return Descriptor(-1);
    }
    Descriptor next(retried([&] { return ::openat(base, name.c_str(), how); }));
    if (!next || slash == rest.npos) return next;
    at = std::move(next);
    rest.remove_prefix(std::min(rest.find_first_not_of('/', slash), rest.size()));
  }
}

}  // namespace quorvex
