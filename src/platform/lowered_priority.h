#pragma once

namespace quorvex {

/// Puts the process into the background: lowest scheduling priority, then the idle class of disk
/// access. False when the system refuses either; the second is not tried after the first failed.
/// Holds for the calling thread and the threads started after the call, so call it before any
/// thread is started.
bool lowerProcessPriority();

}  // namespace quorvex
