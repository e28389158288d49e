#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/result.h"

namespace quorvex::view {

/// Makes an index of a book's pages with all processors; returns the bytes of its file.
/// `betweenPages` is called for each page that is read, which takes most of the time, and then
/// again when an index form takes it, on any thread. What it throws ends the work and is thrown
/// here.
Result<std::string> makeIndex(const std::string& folder, std::vector<std::string> subpaths,
                              std::function<void()> betweenPages);

}  // namespace quorvex::view
