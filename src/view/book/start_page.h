#pragma once

#include <string>

namespace quorvex::view {

/// Returns the path of the page that a book begins with, with a leading slash: of those highest in
/// its folders, an index page or else the first; "/" if there is none.
std::string startPageOf(const std::string& folder);

}  // namespace quorvex::view
