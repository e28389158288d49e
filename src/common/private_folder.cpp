#include "common/private_folder.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "common/files.h"
#include "common/system_error.h"

namespace quorvex {

namespace {

/// An absolute path, or nothing: relative ones mean a folder only by accident.
std::string absoluteIn(const char* variable) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : std::string();
}

/// The folder that the variable names, or `otherwise` below the home folder.
Result<std::string> baseFolder(const char* variable, const char* otherwise) {
  std::string base = absoluteIn(variable);
  if (!base.empty()) return base;
  const std::string home = expandTilde("~");
  if (home.empty() || home.front() != '/') return Error{"There is no home folder"};
  return appendPathComponent(home, otherwise);
}

std::string folderIn(const std::string& base) {
  return appendPathComponent(base, "quorvex");
}

Result<std::string> privateFolder(const char* variable, const char* otherwise) {
  const Result<std::string> base = baseFolder(variable, otherwise);
  if (!base) return base.error();
  if (const Status made = createFolders(*base); !made) {
    return Error{*base + ": " + made.error().description};
  }
  std::string folder = folderIn(*base);
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

constexpr const char* cacheVariable = "XDG_CACHE_HOME";
constexpr const char* cacheOtherwise = ".cache";

}  // namespace

Result<std::string> cacheFolder() {
  return privateFolder(cacheVariable, cacheOtherwise);
}

Result<std::string> cacheFolderPath() {
  const Result<std::string> base = baseFolder(cacheVariable, cacheOtherwise);
  if (!base) return base.error();
  return folderIn(*base);
}

Result<std::string> stateFolder() {
  return privateFolder("XDG_STATE_HOME", ".local/state");
}

}  // namespace quorvex
