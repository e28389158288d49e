#pragma once

namespace quorvex::view {

/// Makes the C library return memory in time instead of keeping up to 64 MiB for each thread after
/// a large book. Call it early in main; it applies to the whole process. Making an index takes no
/// longer, and less memory.
void keepLittleFreeMemory();

/// Returns what is free between blocks in use, too.
void returnFreeMemory();

}  // namespace quorvex::view
