#pragma once

#include <string>

#include "progress/run_follower.h"

namespace quorvex {

/// One line for a terminal: bar, percentage and, when known, pages. At most columns - 1 characters
/// long, so that the terminal does not wrap it; what does not fit is left out, the bar first to
/// shrink and the percentage last to go.
std::string progressBar(const RunProgress& progress, int columns);

/// One line, without its line end, for a file or a pipe: "1234: 40 %, 8 of 20 pages".
std::string progressLine(const RunProgress& progress);

}  // namespace quorvex
