#include "cli/entry.h"

#ifdef QUORVEX_HAS_MIMALLOC
#include <mimalloc.h>
#endif

int main(int argc, char** argv) {
#ifdef QUORVEX_HAS_MIMALLOC
  // Milliseconds until what is free goes back to the system. The default keeps a tenth more memory
  // and saves no time; 1 ms gives back what the next page takes again.
  mi_option_set(mi_option_decommit_delay, 5);
#endif
  return quorvex::quorvexMain({argv, static_cast<std::size_t>(argc)});
}
