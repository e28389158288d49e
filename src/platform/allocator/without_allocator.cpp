#include "platform/program_allocator.h"

// Sanitizers bring an allocator of their own.
bool quorvex::setUpProgramAllocator() {
  return true;
}
