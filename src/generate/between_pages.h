#pragma once

#include <chrono>
#include <thread>

#include "extract/index_settings.h"

namespace quorvex {

/// Called for each queued page and each document that a form takes. In slow mode it pauses briefly,
/// so that others can run.
inline void betweenPages(const IndexSettings& settings) {
  if (settings.useSlowMode) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  if (settings.betweenPages) settings.betweenPages();
}

}  // namespace quorvex
