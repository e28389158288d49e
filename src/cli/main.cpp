#include <cstddef>
#include <new>

#include <sysexits.h>
#include <unistd.h>

#include "cli/entry.h"
#include "common/output.h"

#ifdef QUORVEX_HAS_MIMALLOC
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

namespace {

/// What happens before it is known whether an index is to be made, which has its own end.
int noMemory() {
  quorvex::writeFully(STDERR_FILENO, "Not enough memory\n");
  return EX_OSERR;
}

}  // namespace

int main(int argc, char** argv) try {
#ifdef QUORVEX_HAS_MIMALLOC
  // An exception takes memory too; where there is none from the start, the first would end the
  // process without a word.
  void* const any = mi_malloc(1);
  if (any == nullptr) return noMemory();
  mi_free(any);
  // Milliseconds until what is free goes back to the system. The default keeps a tenth more memory
  // and saves no time; 1 ms gives back what the next page takes again.
  mi_option_set(mi_option_decommit_delay, 5);
#endif
  return quorvex::quorvexMain({argv, static_cast<std::size_t>(argc)});
} catch (const std::bad_alloc&) {
  return noMemory();
}
