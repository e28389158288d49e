#include "cli/entry.h"

#ifdef QUORVEX_HAS_MIMALLOC
#include <cstddef>
#include <new>

#include <mimalloc.h>

// The operators of mimalloc end the process where there is no memory, whatever handler is set; with
// these, a page that is too large for the system is lost alone.
namespace {

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

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
#endif

int main(int argc, char** argv) {
#ifdef QUORVEX_HAS_MIMALLOC
  // Milliseconds until what is free goes back to the system. The default keeps a tenth more memory
  // and saves no time; 1 ms gives back what the next page takes again.
  mi_option_set(mi_option_decommit_delay, 5);
#endif
  return quorvex::quorvexMain({argv, static_cast<std::size_t>(argc)});
}
