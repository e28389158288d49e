#include "search/browser.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/retry.h"
#include "common/system_error.h"
#include "common/url.h"
#include "search/hit_text.h"

namespace quorvex {

namespace {

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

/// The arguments of a command; no shell reads them.
std::vector<std::string> argumentsOf(std::string_view command, const std::string& url) {
  std::vector<std::string> arguments = split(command, ' ');
  bool hasUrl = false;
  for (std::string& argument : arguments) {
    for (std::size_t at = argument.find("%s"); at != argument.npos;
         at = argument.find("%s", at + url.size())) {
      argument.replace(at, 2, url);
      hasUrl = true;
    }
  }
  if (!hasUrl) arguments.push_back(url);
  return arguments;
}

/// How a browser is spawned apart: without the terminal, and ignoring nothing that this program
/// ignores. Without memory for that, as by default.
class SpawnSettings {
 public:
  explicit SpawnSettings(BrowserRuns runs) {
    if (runs == BrowserRuns::here) return;
    _hasAttributes = ::posix_spawnattr_init(&_attributes) == 0;
    if (_hasAttributes) setAttributes();
    _hasFiles = ::posix_spawn_file_actions_init(&_files) == 0;
    if (!_hasFiles) return;
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      ::posix_spawn_file_actions_addopen(&_files, file, "/dev/null", O_RDWR, 0);
  }
  ~SpawnSettings() {
    if (_hasAttributes) ::posix_spawnattr_destroy(&_attributes);
    if (_hasFiles) ::posix_spawn_file_actions_destroy(&_files);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const posix_spawnattr_t* attributes() const { return _hasAttributes ? &_attributes : nullptr; }
  const posix_spawn_file_actions_t* files() const { return _hasFiles ? &_files : nullptr; }

 private:
  void setAttributes() {
    sigset_t none;
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&_attributes, &none);
    sigset_t ignored;
    ::sigemptyset(&ignored);
    for (const int signal : {SIGPIPE, SIGXFSZ})
      ::sigaddset(&ignored, signal);
    ::posix_spawnattr_setsigdefault(&_attributes, &ignored);
    ::posix_spawnattr_setpgroup(&_attributes, 0);
    constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP;
    ::posix_spawnattr_setflags(&_attributes, flags);
  }

  posix_spawnattr_t _attributes{};
  posix_spawn_file_actions_t _files{};
  bool _hasAttributes = false;
  bool _hasFiles = false;
};

bool isSet(const char* variable) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool run(std::vector<std::string> arguments, BrowserRuns runs) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments)
    pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const SpawnSettings settings(runs);
  pid_t process = 0;
  if (::posix_spawnp(&process, pointers[0], settings.files(), settings.attributes(),
                     pointers.data(), environ) != 0) {
    return false;
  }
  int outcome = 0;
  if (retried([&] { return ::waitpid(process, &outcome, 0); }) < 0) return false;
  return WIFEXITED(outcome) && WEXITSTATUS(outcome) == 0;
}

}  // namespace

Result<std::string> urlOfHit(const std::string& book, const Hit& hit) {
  const std::optional<std::string> file = joinPagePath(book, hit.page.path);
  if (!file) return Error{"The path cannot be one of a page: " + hit.page.path};
  struct stat information {};
  if (::stat(file->c_str(), &information) != 0) {
    return Error{*file + ": " + systemError(errno).description};
  }
  if (!S_ISREG(information.st_mode)) return Error{*file + ": Not a regular file"};
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(*file, error);
  const std::filesystem::path folder = std::filesystem::canonical(book, error);
  const std::filesystem::path path = std::filesystem::absolute(*file, error);
  if (error) return Error{*file + ": " + error.message()};
  const auto [folderEnd, rest] = std::ranges::mismatch(folder, target);
  if (folderEnd != folder.end()) return Error{*file + " leads out of the book"};
  return "file://" + percentEncodePath(path.native()) + fragmentOf(hit);
}

Status openInBrowser(const std::string& url, BrowserRuns runs) {
  const bool isChosen = isSet("BROWSER");
  // Without a display, all that xdg-open can start are browsers that need the terminal.
  const bool hasDisplay = isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
  if (runs == BrowserRuns::apart && !isChosen && !hasDisplay) {
    return Error{"No browser could be started: There is no display, and BROWSER is not set"};
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const std::string browsers = isChosen ? std::getenv("BROWSER") : "xdg-open";
  for (const std::string& command : split(browsers, ':')) {
    if (run(argumentsOf(command, url), runs)) return okStatus();
  }
  return Error{"No browser could be started: " + browsers};
}

}  // namespace quorvex
