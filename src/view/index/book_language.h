#pragma once

#include <string>
#include <vector>

#include "common/locale.h"

namespace quorvex::view {

/// Returns the language that most of a book's pages state for themselves, going by a few of them;
/// that of the user where they state none, or several languages equally often and his among them.
/// Without a country, and without the "POSIX" of a system that is set to no language.
Locale languageOfBook(const std::string& folder, const std::vector<std::string>& subpaths,
                      const Locale& userLocale = Locale::current());

}  // namespace quorvex::view
