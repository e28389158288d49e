#include "view/private_folder.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "common/files.h"
#include "common/system_error.h"

namespace quorvex::view {

namespace {

/// An absolute path, or nothing: relative ones mean a folder only by accident.
std::string absoluteIn(const char* variable) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : std::string();
}

}  // namespace

Result<std::string> privateFolder(const char* variable, const char* otherwise) {
  std::string base = absoluteIn(variable);
  if (base.empty()) {
    const std::string home = expandTilde("~");
    if (home.empty() || home.front() != '/') return Error{"There is no home folder"};
    base = appendPathComponent(home, otherwise);
  }
  if (const Status made = createFolders(base); !made) {
    return Error{base + ": " + made.error().description};
  }
  std::string folder = appendPathComponent(base, "quorvex");
  if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    return Error{folder + ": " + systemError(errno).description};
  }
  struct stat information {};
  if (::lstat(folder.c_str(), &information) != 0) {
    return Error{folder + ": " + systemError(errno).description};
  }
  if (!S_ISDIR(information.st_mode) || information.st_uid != ::geteuid()) {
    return Error{folder + " is not a folder of this user"};
  }
  if ((information.st_mode & (S_IRWXG | S_IRWXO)) != 0 && ::chmod(folder.c_str(), S_IRWXU) != 0) {
    return Error{folder + ": " + systemError(errno).description};
  }
  return folder;
}

Result<std::string> cacheFolder() {
  return privateFolder("XDG_CACHE_HOME", ".cache");
}

Result<std::string> stateFolder() {
  return privateFolder("XDG_STATE_HOME", ".local/state");
}

}  // namespace quorvex::view
