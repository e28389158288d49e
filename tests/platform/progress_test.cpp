#include <algorithm>
#include <chrono>
#include <cmath>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

#include "generate/run_notifications.h"
#include "platform/notification_center.h"
#include "progress/progress_view.h"
#include "tests/support/private_desktop.h"

namespace quorvex {
namespace {

using namespace std::chrono_literals;
using test::ChildProcess;

TEST(ProgressViewTest, TheBarFitsEveryWidth) {
  const RunProgress some{7, 20, 0.45, false};
  EXPECT_EQ(progressBar(some, 50), "[###########---------------]  45%   9 of 20 pages");
  EXPECT_EQ(progressBar({7, 1, 1, true}, 40), "[###################] 100%  1 of 1 page");
  for (int columns = -1; columns < 200; ++columns) {
    EXPECT_LE(progressBar(some, columns).size(),
              static_cast<std::size_t>(std::max(columns - 1, 0)));
  }
  EXPECT_EQ(progressLine(some), "7: 45 %, 9 of 20 pages");
  EXPECT_EQ(progressLine({7, {}, 0.999, false}), "7: 99 %");
}

TEST(RunFollowerTest, FollowsOneRunAndIgnoresWhatItCannotTrust) {
  RunFollower follower(std::nullopt);
  for (const char* sender : {"", "x", "-4", "0", "4 ", "99999999999"}) {
    EXPECT_FALSE(follower.handle({runBegins, sender, {}})) << sender;
  }
  EXPECT_TRUE(follower.handle({runBegins, "12", {{"OperationCount", -3}}}));
  EXPECT_FALSE(follower.handle({runEnds, "13", {}}));
  for (const double fraction : {0.3, -1.0, 7.0, std::nan("")}) {
    EXPECT_TRUE(follower.handle({runAdvances, "12", {{"PercentCompleted", fraction}}}));
  }
  EXPECT_EQ(follower.progress()->fraction, 1);
  EXPECT_FALSE(follower.progress()->pages || follower.progress()->ended);
}

class ProgressProgramTest : public testing::Test {
 protected:
  /// Posts for a run and waits until the bus has it.
  static void post(const ChildProcess& run, const char* name, Dictionary info = {}) {
    distributedNotificationCenter()->post({name, std::to_string(run.id()), std::move(info)});
  }

  test::PrivateDesktop _desktop;
  ChildProcess _run{{"sleep", "60"}};
  const std::string _runId = std::to_string(_run.id());
};

TEST_F(ProgressProgramTest, WritesLinesToAPipe) {
  ChildProcess program({QUORVEX_PROGRESS});
  EXPECT_EQ(program.readLine(), "Waiting for a quorvex run");
  post(_run, runBegins, {{"OperationCount", 20}});
  EXPECT_EQ(program.readLine(), _runId + ": 0 %, 0 of 20 pages");
  post(_run, runAdvances, {{"PercentCompleted", 0.5}});
  EXPECT_EQ(program.readLine(), _runId + ": 50 %, 10 of 20 pages");
  post(_run, runEnds);
  EXPECT_EQ(program.readLine(), _runId + ": 100 %, 20 of 20 pages");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(ProgressProgramTest, EndsWhenTheRunDiesOrTheBusIsGone) {
  ChildProcess follower({QUORVEX_PROGRESS, _runId});
  follower.readLine();
  _run.send(SIGKILL);
  EXPECT_EQ(follower.wait(), 1);
  ChildProcess waiting({QUORVEX_PROGRESS});
  waiting.readLine();
  _desktop.bus().send(SIGKILL);
  EXPECT_EQ(waiting.wait(), 3);
  EXPECT_EQ(ChildProcess({QUORVEX_PROGRESS}).wait(), 3);
  EXPECT_EQ(ChildProcess({QUORVEX_PROGRESS, "0"}).wait(), 2);
}

TEST_F(ProgressProgramTest, DrawsOnATerminalAndLeavesItInOrder) {
  int terminal = -1;
  winsize size{24, 30, 0, 0};
  const pid_t program = ::forkpty(&terminal, nullptr, nullptr, &size);
  if (program == 0) {
    // An echo of input could appear anywhere in the program's output.
    termios modes{};
    ::tcgetattr(STDIN_FILENO, &modes);
    modes.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &modes);
    ::setenv("TERM", "xterm", 1);
    ::execl(QUORVEX_PROGRESS, QUORVEX_PROGRESS, _runId.c_str(), nullptr);
    ::_exit(127);
  }
  ASSERT_GT(program, 0) << "no terminal to be had: is /dev/pts mounted?";
  // Held open so that the program's last output cannot get lost.
  const int otherEnd = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
  std::string shown;
  const auto readUntil = [&](const std::string& text) {
    char c = 0;
    pollfd waiting{terminal, POLLIN, 0};
    while (!shown.ends_with(text) && ::poll(&waiting, 1, 20'000) == 1 &&
           ::read(terminal, &c, 1) == 1) {
      shown += c;
    }
    return shown.ends_with(text);
  };
  EXPECT_TRUE(readUntil("\x1b[?25l\rWaiting for a quorvex run\x1b[K"));
  post(_run, runAdvances, {{"PercentCompleted", 0.5}});
  EXPECT_TRUE(readUntil("\r[###########-----------]  50%\x1b[K"));
  size.ws_col = 20;
  ::ioctl(terminal, TIOCSWINSZ, &size);
  EXPECT_TRUE(readUntil("\r[######------]  50%\x1b[K"));
  EXPECT_EQ(::write(terminal, "\x03", 1), 1);
  EXPECT_TRUE(readUntil("\r\n\x1b[?25h")) << shown;
  int status = 0;
  ::waitpid(program, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
  ::close(otherEnd);
  ::close(terminal);
}

}  // namespace
}  // namespace quorvex
