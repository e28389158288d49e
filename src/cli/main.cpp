#include <cstddef>
#include <new>

#include <sysexits.h>
#include <unistd.h>

#include "cli/entry_routine.h"
#include "common/output.h"
#include "platform/program_allocator.h"

namespace {

/// What happens before it is known whether an index is to be made, which has its own end.
int noMemory() {
  quorvex::writeFully(STDERR_FILENO, "Not enough memory\n");
  return EX_OSERR;
}

}  // namespace

int main(int argc, char** argv) try {
  if (!quorvex::setUpProgramAllocator()) return noMemory();
  return quorvex::quorvexMain({argv, static_cast<std::size_t>(argc)});
} catch (const std::bad_alloc&) {
  return noMemory();
}
