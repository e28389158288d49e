#include "platform/program_allocator.h"

#include <cerrno>
#include <cstddef>
#include <new>

#include <mimalloc.h>

#include "common/memory_shortage.h"

// mimalloc's own operators kill the process when memory runs out, whatever handler is set; with
// these, the run ends cleanly.
namespace {

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void onError(int code, void* /*argument*/) {
  if (code == ENOMEM) ++quorvex::memoryShortages();
}

// Renamed in 2.1.
#if MI_MALLOC_VERSION < 210
constexpr mi_option_t delayOption = mi_option_decommit_delay;
#else
constexpr mi_option_t delayOption = mi_option_purge_delay;
#endif

}  // namespace

// NOLINTBEGIN(misc-new-delete-overloads): what is freed by mimalloc's operators is its memory
void* operator new(std::size_t size) {
  return orThrow(mi_malloc(size));
}
void* operator new[](std::size_t size) {
  return orThrow(mi_malloc(size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(mi_malloc_aligned(size, static_cast<std::size_t>(alignment)));
}
// NOLINTEND(misc-new-delete-overloads)

bool quorvex::setUpProgramAllocator() {
  // An exception needs memory too; if there is none from the start, the first would end the process
  // silently.
  void* const any = mi_malloc(1);
  if (any == nullptr) return false;
  mi_free(any);
  mi_register_error(onError, nullptr);
  // Milliseconds until free memory returns to the system. The default keeps a tenth more memory and
  // saves no time; 1 ms returns memory that the next page needs again.
  mi_option_set(delayOption, 5);
  return true;
}
