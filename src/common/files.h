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

/// Default limit on the size of a file to read.
inline constexpr std::uint64_t maximumFileSize = 0x7fffffff;

/// Locates a file whose path may exceed PATH_MAX, for openat() and the like. The path's text must
/// outlive it.
struct NearPath {
  Descriptor folder;  ///< unset: `rest` is the whole path
  const char* rest;

  int base() const { return folder ? folder.get() : AT_FDCWD; }
};

/// Fails if a folder along the path cannot be opened.
Result<NearPath> nearPath(const std::string& path);

/// Fails with the reason unless `mode` is that of a regular file.
Status regularFile(mode_t mode);

struct RegularFile {
  Descriptor descriptor;  ///< for reading
  std::uint64_t size;     ///< when it was opened
};

/// Opens a regular file of up to `limit` bytes. Anything else (folder, FIFO, device, socket) fails
/// without being opened.
Result<RegularFile> openRegularFile(const std::string& path, std::uint64_t limit = UINT64_MAX);

/// Reads an open regular file of up to `limit` bytes from where it stands.
Result<Data> readOpenFile(int descriptor, std::uint64_t limit = maximumFileSize);

/// Reads a whole regular file of up to `limit` bytes.
Result<Data> readFile(const std::string& path, std::uint64_t limit = maximumFileSize);

/// Likewise, but pass the file to `take` in pieces; stop without an error when `take` returns
/// false.
Status readOpenFileInPieces(int descriptor, std::uint64_t limit,
                            const std::function<bool(std::string_view)>& take);
Status readFileInPieces(const std::string& path, std::uint64_t limit,
                        const std::function<bool(std::string_view)>& take);

/// Creates a folder and its missing parents so that they survive a power cut.
Status createFolders(const std::string& path);

/// Flushes a folder's entries to disk if the file system supports it.
void flushFolder(const std::string& path);

/// Returns the containing folder; "." for a bare name.
std::string folderOf(const std::string& path);

/// Expands a leading "~" (from HOME, else the user database) or "~user" to the home folder. Other
/// text, including "~user" of an unknown user, is unchanged.
std::string expandTilde(std::string_view path);

/// Expands a tilde, drops "." and empty components, and lets ".." cancel the component before it.
/// Ignores symbolic links. Relative paths stay relative.
std::string standardizePath(std::string_view path);

/// Returns the last component without separators; "/" for the root, empty for an empty path.
std::string_view lastPathComponent(std::string_view path);
/// Returns what precedes the last component, without the separator ("/" stays); empty for a path of
/// one component.
std::string_view withoutLastPathComponent(std::string_view path);
/// Joins `base` and `component` with exactly one separator.
std::string appendPathComponent(std::string_view base, std::string_view component);

}  // namespace quorvex
