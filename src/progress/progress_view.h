#pragma once

#include <string>

#include "progress/run_follower.h"

namespace quorvex {

/// Formats one line for a terminal: bar, percentage and, when known, pages. At most columns - 1
/// characters long, so it does not wrap. To fit, shrinks the bar, then drops the pages, the bar and
/// finally the percentage.
std::string progressBar(const RunProgress& progress, int columns);

/// Formats one line, without line end, for a file or pipe: "1234: 40 %, 8 of 20 pages".
std::string progressLine(const RunProgress& progress);

}  // namespace quorvex
