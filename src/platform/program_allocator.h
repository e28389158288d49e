#pragma once

namespace quorvex {

/// A program that calls this allocates with an allocator that is faster at small pieces than the C
/// library's, and its operator new throws where there is no memory, as any other's. To be called
/// first thing in main; false when there is no memory even then. From then on memoryShortages()
/// counts each allocation that fails, whoever asked for it. Not for a library: the allocator is the
/// choice of the whole process.
bool setUpProgramAllocator();

}  // namespace quorvex
