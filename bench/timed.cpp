// Runs a command and appends what it cost to a file, finer than time(1) tells: wall time, user and
// system time in milliseconds, and peak memory in kilobytes, of the process and its children.
//
//   timed FILE COMMAND…
//
// Exits with the command's status. A small program of its own, since a process's peak begins with
// that of the one that started it.

#include <cerrno>
#include <cstdio>
#include <ctime>

#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double now() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) {
    std::fprintf(stderr, "usage: timed FILE COMMAND...\n");
    return 125;
  }
  const double begin = now();
  const pid_t child = ::fork();
  if (child == 0) {
    ::execvp(arguments[2], arguments + 2);
    std::perror(arguments[2]);
    ::_exit(127);
  }
  int status = 0;
  rusage used{};
  while (child < 0 || ::wait4(child, &status, 0, &used) < 0) {
    if (child >= 0 && errno == EINTR) continue;
    std::perror("timed");
    return 125;
  }
  const double wall = now() - begin;
  std::FILE* file = std::fopen(arguments[1], "a");
  if (file == nullptr ||
      std::fprintf(file, "%.3f\t%.3f\t%.3f\t%ld\n", wall, milliseconds(used.ru_utime),
                   milliseconds(used.ru_stime), used.ru_maxrss) < 0 ||
      std::fclose(file) != 0) {
    std::perror("timed");
    return 125;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
