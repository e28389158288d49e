#pragma once

#include <string>

namespace quorvex::view {

/// Returns the path of the page that a book begins with, encoded and with a leading slash: the
/// index page highest in its folders, else the first page there; "/" if there is none.
std::string startPageOf(const std::string& folder);

}  // namespace quorvex::view
