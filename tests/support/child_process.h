#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {

/// A program running beside the test, its standard output read through a pipe. Killed at the end
/// unless waited for.
class ChildProcess {
 public:
  explicit ChildProcess(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) std::abort();
    _process = ::fork();
    if (_process == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // CTest waits for whatever holds a dead test's output
      ::dup2(pipe[1], STDOUT_FILENO);
      ::execvp(argv[0], argv.data());
      ::_exit(127);
    }
    ::close(pipe[1]);
    _output = pipe[0];
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    if (_process > 0) {
      send(SIGKILL);
      wait();
    }
    ::close(_output);
  }

  pid_t id() const { return _process; }
  void send(int signal) const { ::kill(_process, signal); }

  /// The next line of output without line feed.
  std::string readLine() const {
    std::string line;
    for (char c = 0; ::read(_output, &c, 1) == 1 && c != '\n';)
      line += c;
    return line;
  }

  /// The exit status, or minus the signal that ended it.
  int wait() {
    int status = 0;
    ::waitpid(_process, &status, 0);
    _process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t _process = -1;
  int _output = -1;
};

}  // namespace quorvex::test
