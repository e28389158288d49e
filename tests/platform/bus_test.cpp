#include <chrono>
#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/message_port.h"
#include "platform/notification_center.h"
#include "platform/session_bus.h"
#include "tests/support/private_desktop.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

using namespace std::chrono_literals;
using test::StandIn;

constexpr CallLimits shortLimits{1s, 300ms};

std::chrono::duration<double> timed(const std::function<void()>& body) {
  const auto start = SessionBus::Clock::now();
  body();
  return SessionBus::Clock::now() - start;
}

class BusTest : public testing::Test {
 protected:
  test::PrivateDesktop _desktop;
  std::shared_ptr<SessionBus> _bus = std::make_shared<SessionBus>();
};

TEST_F(BusTest, AllThatWasPostedArrivesInOrderWithItsValues) {
  std::vector<Notification> heard;
  const auto listener = distributedNotificationCenter(_bus);
  listener->addObserver("n", [&](const Notification& n) { heard.push_back(n); });
  {
    const auto poster = distributedNotificationCenter();
    poster->post({"other", "", {}});
    poster->post({"n", "not \xff text", {}});
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < 500; ++i)
          poster->post({"n", std::to_string(t), {{"i", i}}});
      });
    }
    for (std::thread& thread : threads)
      thread.join();
    poster->post({"n", "s", {{"b", true}, {"r", 0.25}, {"s", "x"}, {"left out", Array()}}});
  }
  _bus->runUntil([&] { return heard.size() == 2001; }, SessionBus::Clock::now() + 5s);
  ASSERT_EQ(heard.size(), 2001u);
  EXPECT_EQ(Value(heard.back().userInfo), Value(Dictionary{{"b", true}, {"r", 0.25}, {"s", "x"}}));
  heard.pop_back();
  std::map<std::string, std::int64_t> next;
  for (const Notification& n : heard) {
    EXPECT_EQ(n.userInfo.at("i"), Value(std::int64_t{next[n.sender]++}));
  }
}

TEST_F(BusTest, PostingCostsNothingWhateverHappensToTheBus) {
  const auto post = [](NotificationCenter& center) {
    for (int i = 0; i < 100; ++i)
      center.post({"n", "1", {{"i", i}}});
  };
  const auto dying = distributedNotificationCenter();
  post(*dying);
  std::this_thread::sleep_for(50ms);
  auto stuck = distributedNotificationCenter();
  _desktop.bus().send(SIGSTOP);
  EXPECT_LT(timed([&] { post(*stuck); }), 0.1s);
  EXPECT_LT(timed([&] { stuck.reset(); }), test::limitsHold ? 3s : 60s);
  EXPECT_FALSE(SessionBus(200ms).connect().ok());
  _desktop.bus().send(SIGKILL);
  EXPECT_LT(timed([&] { post(*dying); }), 0.1s);
}

TEST_F(BusTest, RequestsTellWhyTheyFail) {
  const auto ports = busMessagePorts(_bus);
  std::optional<StandIn> daemon(std::in_place, "com.corvane.folliod", "answer", "ab");
  const auto port = ports->remotePort("com.corvane.folliod");
  EXPECT_EQ(port->sendRequest(13, "", shortLimits).data, "ab");
  EXPECT_EQ(port->sendRequest(7, "", shortLimits).status, MessagePortStatus::transportError);
  daemon.reset();
  EXPECT_EQ(port->sendRequest(13, "", shortLimits).status, MessagePortStatus::invalidPort);
  _desktop.bus().send(SIGSTOP);
  const std::string large(16 << 20, 'x');  // more than the socket takes at once
  EXPECT_EQ(port->sendRequest(13, large, {200ms, 9s}).status, MessagePortStatus::sendTimedOut);
}

}  // namespace
}  // namespace quorvex
