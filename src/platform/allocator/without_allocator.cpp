#include "platform/program_allocator.h"

// Sanitizers bring their own allocator.
bool quorvex::setUpProgramAllocator() {
  return true;
}
