#pragma once

namespace quorvex {

/// Puts the process into the background: lowest scheduling priority, then the idle I/O class.
/// Returns false if the system refuses either; the second is not tried if the first fails. Affects
/// only the calling thread and threads started later, so call it before starting any thread.
bool lowerProcessPriority();

}  // namespace quorvex
