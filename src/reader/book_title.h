#pragma once

#include <string>

#include "platform/textsift.h"

namespace quorvex::reader {

/// Returns the title of the whole book: what most titles share, else the title of the page that is
/// highest in its folders, with one named index before others. Empty if there is none.
std::string bookTitle(const TSSearchRef& search);

}  // namespace quorvex::reader
