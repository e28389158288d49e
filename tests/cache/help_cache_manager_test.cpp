#include "cache/help_cache_manager.h"

#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <systemd/sd-bus.h>

#include "tests/support/cbor_forms.h"
#include "tests/support/private_desktop.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;
using test::StandIn;

constexpr const char* daemonName = "com.corvane.folliod";
constexpr const char* viewerName = "com.corvane.folioview";
const std::string accepted =
    "FVDHelpDataIsTerminating: Shutdown request successfully sent to folliod\n";
const std::string cleared =
    "Caches Cleared: Folio View and folliod cache files and preferences have been cleared\n";
const std::string notCleared =
    "Caches not cleared: There was a problem clearing Folio View and folliod cache files, see logs "
    "for details\n";

class HelpCacheManagerTest : public testing::Test {
 protected:
  HelpCacheManagerTest() {
    for (const char* file :
         {"Caches/com.corvane.folliod/a/b", "Containers/com.corvane.folioview/c",
          "Preferences/com.corvane.help.kvdoc", "Preferences/com.corvane.folliod.kvdoc",
          "Preferences/com.corvane.folioview.kvdoc", "Preferences/com.corvane.other.kvdoc"}) {
      _desktop.files().write(std::string("Library/") + file, "<kvdoc><dict/></kvdoc>");
    }
  }

  static std::string purge() {
    testing::internal::CaptureStdout();
    const CallLimits limits{std::chrono::seconds(1), std::chrono::milliseconds(300)};
    QXHelpCacheManager(userHelpCacheServices(limits)).shutdownAndClear();
    return testing::internal::GetCapturedStdout();
  }

  /// Returns what is printed after a daemon agreed. Files are deleted as the user.
  static std::string purgeAccepted(uid_t user = ::getuid()) {
    const StandIn daemon(daemonName, "answer", test::keyed("FVDHelpDataIsTerminating"));
    ::setfsuid(user);
    const std::string printed = purge();
    ::setfsuid(::getuid());
    EXPECT_EQ(printed.substr(0, accepted.size()), accepted);
    return printed.substr(accepted.size());
  }

  /// The files below ~/Library.
  std::size_t filesLeft() const {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(_library)) {
      count += entry.is_directory() ? 0U : 1U;
    }
    return count;
  }

  test::PrivateDesktop _desktop;
  const fs::path _library = fs::path(_desktop.home()) / "Library";
};

TEST_F(HelpCacheManagerTest, NothingIsDeletedUnlessTheDaemonAgrees) {
  const std::string noPort = "Unable to create folliod message port";
  EXPECT_EQ(purge(), noPort);
  const struct {
    const char* behaviour;
    std::string reply;
    const char* response;
  } cases[] = {{"answer", test::keyed("busy"), "busy"},
               {"answer", "", "0"},
               {"answer", "no archive", "(null)"},
               {"answer", test::keyed(7), "(null)"},
               {"refuse", "", "-4"},
               {"silent", "", "-2"},
               {"vanish", "", "-5"}};
  for (const auto& c : cases) {
    const StandIn daemon(daemonName, c.behaviour, c.reply);
    EXPECT_EQ(purge(), std::string("\nFVDHelpDataFailedToTerminate: Shutdown request to folliod "
                                   "failed with response: ") +
                           c.response +
                           "\nFolio View and folliod cache files were not cleared, see logs for "
                           "details\n");
  }
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  EXPECT_EQ(purge(), noPort);
  EXPECT_EQ(filesLeft(), 6u);
}

TEST_F(HelpCacheManagerTest, ClearsEverythingAndSaysWhatTheDaemonAnnounced) {
  fs::remove_all(_library / "Caches/com.corvane.folliod");
  fs::create_symlink("../Preferences", _library / "Caches/com.corvane.folliod");
  fs::remove_all(_library / "Containers/com.corvane.folioview");
  fs::create_symlink("nowhere", _library / "Containers/com.corvane.folioview");
  {
    const StandIn daemon(daemonName, "announce", test::keyed("FVDHelpDataIsTerminating"));
    EXPECT_EQ(purge(), "Received termination response from folliod\n" + accepted + cleared);
  }
  EXPECT_EQ(filesLeft(), 1u);
  EXPECT_TRUE(fs::exists(_library / "Preferences/com.corvane.other.kvdoc"));
  fs::remove_all(_library);
  EXPECT_EQ(purgeAccepted(), cleared);
}

TEST_F(HelpCacheManagerTest, EndsTheViewerOneWayOrTheOther) {
  const struct {
    const char* behaviour;
    std::string line;
    int end;
  } cases[] = {{"quit", "FolioView terminated\n", 0},
               {"vanish", "FolioView terminated\n", 0},
               {"refuse", "FolioView force terminated\n", -SIGKILL},
               {"announce", "FolioView terminated\n", -SIGTERM},
               {"silent", "FolioView terminated\n", -SIGTERM}};
  for (const auto& c : cases) {
    StandIn viewer(viewerName, c.behaviour);
    EXPECT_EQ(purgeAccepted(), c.line + cleared);
    if (c.end == -SIGTERM) viewer.send(SIGTERM);  // no one else does
    EXPECT_EQ(viewer.wait(), c.end) << c.behaviour;
  }
  // This process refuses to quit and must not be killed.
  sd_bus* self = nullptr;
  ASSERT_GE(sd_bus_open_user(&self), 0);
  ASSERT_GE(sd_bus_request_name(self, viewerName, 0), 0);
  std::jthread answering([self](const std::stop_token& stop) {
    while (!stop.stop_requested() && sd_bus_process(self, nullptr) >= 0)
      sd_bus_wait(self, 10'000);
  });
  EXPECT_EQ(purgeAccepted(), cleared);
  answering.request_stop();
  answering.join();
  sd_bus_unref(self);
}

TEST_F(HelpCacheManagerTest, StopsAtAPathThatCannotBeRemoved) {
  const fs::perms before = fs::status(_library).permissions();
  const std::string cache = _library / "Caches/com.corvane.folliod/";
  fs::permissions(fs::path(_desktop.home()).parent_path(), fs::perms::all);
  fs::permissions(_library / "Caches", fs::perms::all);
  fs::permissions(cache, fs::perms{0555});
  const std::string printed = purgeAccepted(65534);  // root may delete everything
  fs::permissions(cache, before);
  EXPECT_EQ(printed, "Unable to clear caches at path: " + cache + "\nError: " + cache +
                         "a: Permission denied\n" + notCleared);
  EXPECT_EQ(filesLeft(), 6u);

  ::setenv("HOME", "relative", 1);
  const std::string relative = "relative/Library/Caches/com.corvane.folliod/";
  EXPECT_EQ(purgeAccepted(), "Unable to clear caches at path: " + relative +
                                 "\nError: " + relative + ": Not an absolute path\n" + notCleared);
}

TEST_F(HelpCacheManagerTest, TellsThatADomainSurvives) {
  const fs::path domain = _library / "Preferences/com.corvane.folioview.kvdoc";
  fs::remove(domain);
  fs::create_directory(domain);
  EXPECT_EQ(purgeAccepted(),
            "Defaults not cleared: There was a problem clearing Folio View and folliod defaults, "
            "see logs for details\n");
  EXPECT_EQ(filesLeft(), 1u);
}

}  // namespace
}  // namespace quorvex
