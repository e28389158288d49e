#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/types.h>

#include "common/descriptor.h"
#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// The most that is read of one file when nothing else is said.
inline constexpr std::uint64_t maximumFileSize = 0x7fffffff;

/// Where to find a file whose path may be longer than the system takes in one piece: to be handed
/// to openat() and the like. The text of the path must outlive it.
struct NearPath {
  Descriptor folder;  ///< none: `rest` is the whole path
  const char* rest;

  int base() const { return folder ? folder.get() : AT_FDCWD; }
};

/// Fails where a folder on the way cannot be found.
Result<NearPath> nearPath(const std::string& path);

/// Fails, saying what it is instead, unless the mode is a regular file's.
Status regularFile(mode_t mode);

struct RegularFile {
  Descriptor descriptor;  ///< for reading
  std::uint64_t size;     ///< when it was opened
};

/// Opens a regular file of up to `limit` bytes. Anything else (folder, FIFO, device, socket) fails
/// without being opened.
Result<RegularFile> openRegularFile(const std::string& path, std::uint64_t limit = UINT64_MAX);

/// Reads a regular file of up to `limit` bytes whole.
Result<Data> readFile(const std::string& path, std::uint64_t limit = maximumFileSize);

/// The same, handing the file over in pieces as it is read; stops without an error when `take`
/// returns false.
Status readFileInPieces(const std::string& path, std::uint64_t limit,
                        const std::function<bool(std::string_view)>& take);

/// Makes a folder with those in front of it that are missing, to last through a power cut.
Status createFolders(const std::string& path);

/// Has the system put a folder's entries on the disk, which some file systems cannot.
void flushFolder(const std::string& path);

/// The folder that a path lies in: "." for a name alone.
std::string folderOf(const std::string& path);

/// A leading "~" or "~/" becomes the home folder (HOME, else the user database); other text,
/// "~user" of an unknown user among it, stays as it is.
std::string expandTilde(std::string_view path);

/// Tilde expanded, "." and empty components dropped, ".." folded into the component before it. No
/// symbolic link is looked at. Relative paths stay relative.
std::string standardizePath(std::string_view path);

/// The last component without the separators around it; "/" for the root, empty for empty.
std::string_view lastPathComponent(std::string_view path);
/// What is left in front of the last component, without its separator ("/" stays). A path of one
/// component gives the empty text.
std::string_view withoutLastPathComponent(std::string_view path);
/// `base` and `component` with exactly one separator between them.
std::string appendPathComponent(std::string_view base, std::string_view component);

}  // namespace quorvex
