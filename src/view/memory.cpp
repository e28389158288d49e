#include "view/memory.h"

#include <malloc.h>

namespace quorvex::view {

void keepLittleFreeMemory() {
  constexpr int mebibyte = 1 << 20;
  // By default both grow with the largest block that was ever freed.
  ::mallopt(M_MMAP_THRESHOLD, 4 * mebibyte);
  ::mallopt(M_TRIM_THRESHOLD, mebibyte);
}

void returnFreeMemory() {
  ::malloc_trim(0);
}

}  // namespace quorvex::view
