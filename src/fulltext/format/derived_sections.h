#pragma once

#include <string>
#include <vector>

namespace quorvex {

/// Makes the sections of an index that follow from its others and save each search a pass over all
/// of it: codes, titles, joined terms and names of places. `sections`: all of them, that of kind 1
/// first, with the others in place.
void addDerivedSections(std::vector<std::string>& sections);

}  // namespace quorvex
