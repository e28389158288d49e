#pragma once

#include <optional>
#include <string>

#include "cli/index_format.h"
#include "common/value.h"

// An index file contains one dictionary, as a sequential archive (format none) or as a keyed
// archive compressed as a whole (the other formats). The file does not record which. Only strings,
// data, arrays, dictionaries, numbers and searchable items may appear in it. Main thread only.

namespace quorvex {

/// Writes the file completely or, on any failure, not at all; creates its parent folders first. A
/// null dictionary fails without a message. Defers termination signals meanwhile.
bool writeIndexFile(const std::optional<Dictionary>& index, const std::optional<std::string>& path,
                    IndexFormat format);

/// Reads the dictionary of an existing file for modification. Null when there is none.
std::optional<Dictionary> readIndexFileForCreate(const std::optional<std::string>& path,
                                                 IndexFormat format);

/// Reads the dictionary of a file in either compressed format for listing. Null when there is none;
/// rejected archives are logged to syslog.
std::optional<Dictionary> readIndexFileForListing(const std::string& path);

}  // namespace quorvex
