#pragma once

#include <string>
#include <vector>

#include <sys/resource.h>

#include "common/files.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quorvex::test {

/// Sanitizers reserve terabytes of addresses and are several times slower.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool limitsHold = false;
#else
inline constexpr bool limitsHold = true;
#endif

/// How a run of a program ended.
struct Ended {
  int status;  ///< or minus the signal that ended it
  std::string output;
  std::string errors;
  double seconds;  ///< of processor time
};

/// Runs a program in a folder and captures all its output. `limits`: shell commands (ulimit) to run
/// first.
class ProgramRun {
 public:
  ProgramRun(const std::filesystem::path& folder, const std::vector<std::string>& words,
             const std::string& limits = ":")
      : _process(inShell(folder, words, limits)) {}

  void send(int signal) const { _process.send(signal); }

  Ended end() {
    const double before = secondsOfChildren();
    const int status = _process.wait();
    return {status, contents("output"), contents("errors"), secondsOfChildren() - before};
  }

 private:
  std::vector<std::string> inShell(const std::filesystem::path& folder,
                                   const std::vector<std::string>& words,
                                   const std::string& limits) const {
    const std::string script =
        "cd \"$1\" && shift && " + limits + " && exec \"$@\" >\"$0/output\" 2>\"$0/errors\"";
    std::vector<std::string> all{"/bin/sh", "-c", script, _caught.path(), folder};
    all.insert(all.end(), words.begin(), words.end());
    return all;
  }
  std::string contents(const char* name) const {
    const Result<Data> data = readFile(_caught.path() / name);
    return data ? std::string(data->bytes()) : std::string();
  }
  static double secondsOfChildren() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  }

  TemporaryFolder _caught;
  ChildProcess _process;
};

}  // namespace quorvex::test
