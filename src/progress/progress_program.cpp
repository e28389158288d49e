#include "progress/progress_program.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <signal.h>
#include <unistd.h>

#include "common/format.h"
#include "common/output.h"
#include "generate/run_notifications.h"
#include "platform/process_handle.h"
#include "platform/session_bus.h"
#include "progress/progress_arguments.h"
#include "progress/run_follower.h"
#include "progress/screen.h"

namespace quorvex {
namespace {

using std::chrono::milliseconds;

// How soon a resized window, the run's end or an interruption is noticed.
constexpr milliseconds tick(200);
// A process's last messages arrive within this time of its death.
constexpr milliseconds lastWords(500);

constexpr std::string_view usage =
    "Usage: quorvex-progress [PID]\n"
    "Shows the progress of a quorvex run that was started with -n, until it ends.\n"
    "\n"
    "  PID         the run's process; without it, the first run seen\n"
    "  -h, --help  print this help and exit\n"
    "\n"
    "On a terminal it draws a bar; elsewhere it prints a line for each step.\n"
    "\n"
    "Exit status: 0 the run's pages are done, 1 no such run, or it ended early,\n"
    "2 wrong usage, 3 no session bus, 4 no output possible.\n";

int status(ProgressStatus status) {
  return static_cast<int>(status);
}

int fail(ProgressStatus outcome, const std::string& message) {
  writeFully(STDERR_FILENO, "quorvex-progress: " + message + "\n");
  return status(outcome);
}

int cannotWrite(int error) {
  return fail(ProgressStatus::noOutput, standardOutputError(error).description);
}

/// Defers an interruption until the screen has been restored.
class Interruption {
 public:
  Interruption() {
    struct sigaction action = {};
    action.sa_handler = [](int signal) { received = signal; };
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signals.size(); ++i) {
      ::sigaction(signals[i], nullptr, &_previous[i]);
      if (_previous[i].sa_handler != SIG_IGN) ::sigaction(signals[i], &action, nullptr);
    }
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  /// Re-raises it for the previous handler.
  ~Interruption() {
    for (std::size_t i = 0; i < signals.size(); ++i) {
      ::sigaction(signals[i], &_previous[i], nullptr);
    }
    if (const int signal = received.exchange(0); signal != 0) ::raise(signal);
  }

  bool happened() const { return received != 0; }

 private:
  static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
  // A signal handler can only access static data.
  static inline std::atomic<int> received = 0;
  std::array<struct sigaction, signals.size()> _previous{};
};

/// Follows one run.
class Session {
 public:
  explicit Session(std::optional<pid_t> wanted)
      : _wanted(wanted), _follower(wanted), _notifications(distributedNotificationCenter(_bus)) {}

  int run() {
    if (const auto connected = _bus->connect(); !connected) {
      return fail(ProgressStatus::noBus, connected.error().description);
    }
    for (const char* name : {runBegins, runAdvances, runEnds}) {
      const bool heard =
          _notifications->addObserver(name, [this](const Notification& notification) {
            _changed = _follower.handle(notification) || _changed;
          });
      if (!heard) return fail(ProgressStatus::noBus, "The session bus does not allow listening");
    }
    if (_wanted) {
      _watch = std::make_unique<ProcessHandle>(*_wanted);
      if (_watch->ended()) {
        return fail(ProgressStatus::runVanished, formatText("No process %d", {*_wanted}));
      }
    }
    const Interruption interruption;
    return follow(interruption);
  }

 private:
  int follow(const Interruption& interruption) {
    std::optional<ProgressStatus> outcome;
    {
      Screen screen(STDOUT_FILENO);
      while (!outcome && !interruption.happened())
        outcome = step(screen, interruption);
    }
    if (!outcome) return 128;  // only if the signal is ignored; otherwise it ends the process
    if (*outcome == ProgressStatus::noBus)
      return fail(*outcome, "Lost the connection to the session bus");
    if (*outcome == ProgressStatus::runVanished) {
      return fail(*outcome, "The run ended before all its pages were done");
    }
    if (*outcome == ProgressStatus::noOutput) return cannotWrite(_writeError);
    return status(*outcome);
  }

  /// Draws, then waits for the next change or tick. Returns the outcome, once known.
  std::optional<ProgressStatus> step(Screen& screen, const Interruption& interruption) {
    const auto& progress = _follower.progress();
    const bool written =
        progress ? screen.show(*progress) : screen.showText("Waiting for a quorvex run");
    if (!written) {
      _writeError = errno;
      return ProgressStatus::noOutput;
    }
    if (progress && progress->ended) return ProgressStatus::runEnded;
    if (progress && !_watch) _watch = std::make_unique<ProcessHandle>(progress->process);
    // Checked before the wait, which then handles its last messages.
    const bool dead = _watch && _watch->ended();
    const auto wait = _bus->runUntil([&] { return _changed || interruption.happened(); },
                                     SessionBus::Clock::now() + (dead ? lastWords : tick));
    if (wait == SessionBus::Wait::lost) return ProgressStatus::noBus;
    if (dead && !_changed && !interruption.happened()) return ProgressStatus::runVanished;
    _changed = false;
    return std::nullopt;
  }

  std::optional<pid_t> _wanted;
  RunFollower _follower;
  std::shared_ptr<SessionBus> _bus = std::make_shared<SessionBus>();
  std::shared_ptr<NotificationCenter> _notifications;
  std::unique_ptr<ProcessHandle> _watch;
  bool _changed = false;
  int _writeError = 0;
};

}  // namespace

int runProgressProgram(std::span<char* const> arguments) {
  const Result<ProgressArguments> parsed = parseProgressArguments(arguments);
  if (!parsed) {
    return fail(ProgressStatus::wrongUsage,
                parsed.error().description + "\nTry 'quorvex-progress --help'.");
  }
  if (parsed->help) {
    return writeFully(STDOUT_FILENO, usage) ? 0 : cannotWrite(errno);
  }
  return Session(parsed->process).run();
}

}  // namespace quorvex
