#pragma once

#include <optional>
#include <string>

#include "cli/index_format.h"
#include "common/value.h"

// The index file: one dictionary, as a sequential archive (format none) or as a keyed archive that
// is compressed as a whole (the other formats). The file does not tell which of the two it is. Only
// strings, data, arrays, dictionaries, numbers and searchable items may appear in it. Main thread
// only.

namespace quorvex {

/// Writes the file as a whole or, when anything fails, not at all; makes the folders in front of it
/// first. A null dictionary fails without a message. Signals that end the process wait meanwhile.
bool writeIndexFile(const std::optional<Dictionary>& index, const std::optional<std::string>& path,
                    IndexFormat format);

/// The dictionary of an existing file, to be changed and written again. Null when there is none.
std::optional<Dictionary> readIndexFileForCreate(const std::optional<std::string>& path,
                                                 IndexFormat format);

/// The dictionary of a file of either compressed format, to be listed. Null when there is none; an
/// archive that is refused is told to the system log.
std::optional<Dictionary> readIndexFileForListing(const std::string& path);

}  // namespace quorvex
