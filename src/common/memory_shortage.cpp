#include "common/memory_shortage.h"

#include <sys/mman.h>

namespace quorvex {

void probeMemory() {
  constexpr std::size_t enough = std::size_t{4} * 1024 * 1024;
  void* const memory =
      ::mmap(nullptr, enough, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    ++memoryShortages();
  } else {
    ::munmap(memory, enough);
  }
}

}  // namespace quorvex
