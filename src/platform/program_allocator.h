#pragma once

namespace quorvex {

/// Gives the program an allocator that is faster for small blocks than the C library's; operator
/// new still throws when memory runs out. Call first thing in main; returns false if memory is
/// already exhausted. From then on memoryShortages() counts every failed allocation, whatever
/// requested it. Not for libraries: the allocator is a choice for the whole process.
bool setUpProgramAllocator();

}  // namespace quorvex
