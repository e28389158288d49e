// Runs a command and tells how much of its work one thread did while no other had any: what further
// processors cannot shorten.
//
//   working_threads FILE COMMAND…
//
// Every five milliseconds it reads whether each thread has run, has waited for a processor or waits
// for one, so that other work on the machine hardly changes the answer. What a thread did that
// ended in between is known from the process's clock alone and counts as one more thread. Appends
// to the file, in seconds: wall time, processor time, and the part of it that one thread spent
// alone.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double window = 0.005;
// The kernel brings a running thread's time up to date at least every 4 ms, its tick. Less than
// this in a window is waking up to look for work.
constexpr double atWork = 0.0005;

double secondsOf(clockid_t clock) {
  timespec time{};
  if (::clock_gettime(clock, &time) != 0) return 0;
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

class Trace {
 public:
  explicit Trace(pid_t process) : _tasks("/proc/" + std::to_string(process) + "/task") {
    if (::clock_getcpuclockid(process, &_clock) != 0) _clock = CLOCK_THREAD_CPUTIME_ID;
  }

  // Before the process has been waited for.
  void look() {
    const double spent = secondsOf(_clock);
    int working = 0;
    double seen = 0;
    std::error_code gone;
    for (std::filesystem::directory_iterator task(_tasks, gone), end; !gone && task != end;
         task.increment(gone)) {
      const Times times = timesOf(task->path().string());
      Times& before = _threads[task->path().filename().string()];
      seen += times.ran - before.ran;
      if (times.ran + times.waited - before.ran - before.waited > atWork ||
          isReady(task->path().string())) {
        ++working;
      }
      before = times;
    }
    // The threads' times lag behind the process's clock by up to a tick each.
    _unseen += spent - _spent - seen;
    if (_unseen > 2 * window) {
      ++working;
      _unseen = 0;
    }
    if (working == 1) _alone += spent - _spent;
    _spent = spent;
  }

  double alone() const { return _alone; }

 private:
  struct Times {
    double ran = 0;
    double waited = 0;  // as far as the thread has run since
  };

  static std::string lineOf(const std::string& path) {
    char line[512] = "";
    if (std::FILE* file = std::fopen(path.c_str(), "r")) {
      if (std::fgets(line, sizeof line, file) == nullptr) line[0] = 0;
      std::fclose(file);
    }
    return line;
  }

  static Times timesOf(const std::string& task) {
    const std::string line = lineOf(task + "/schedstat");
    char* rest = nullptr;
    const double ran = std::strtod(line.c_str(), &rest) / 1e9;
    return {ran, std::strtod(rest, nullptr) / 1e9};
  }

  static bool isReady(const std::string& task) {
    const std::string line = lineOf(task + "/stat");
    const std::size_t name = line.rfind(')');
    return name != std::string::npos && line.compare(name, 3, ") R") == 0;
  }

  std::string _tasks;
  clockid_t _clock{};
  std::map<std::string, Times> _threads;
  double _spent = 0;
  double _unseen = 0;
  double _alone = 0;
};

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

int failed() {
  std::perror("working_threads");
  return 125;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) {
    std::fprintf(stderr, "usage: working_threads FILE COMMAND...\n");
    return 125;
  }
  const double begin = secondsOf(CLOCK_MONOTONIC);
  const pid_t child = ::fork();
  if (child == 0) {
    ::execvp(arguments[2], arguments + 2);
    std::perror(arguments[2]);
    ::_exit(127);
  }
  if (child < 0) return failed();
  // On a busy machine, too, looks should come when they are due. Only root may ask for it.
  static_cast<void>(::setpriority(PRIO_PROCESS, 0, -15));
  int status = 0;
  rusage used{};
  Trace trace(child);
  for (pid_t ended = 0; ended != child;) {
    const timespec pause{0, static_cast<long>(window * 1e9)};
    ::nanosleep(&pause, nullptr);
    ended = ::wait4(child, &status, WNOHANG, &used);
    if (ended == 0) trace.look();
    if (ended < 0 && errno != EINTR) return failed();
  }
  const double wall = secondsOf(CLOCK_MONOTONIC) - begin;
  const double processor = secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
  std::FILE* file = std::fopen(arguments[1], "a");
  if (file == nullptr ||
      std::fprintf(file, "%.3f\t%.3f\t%.3f\n", wall, processor, trace.alone()) < 0 ||
      std::fclose(file) != 0) {
    return failed();
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
