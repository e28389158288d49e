#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/call_limits.h"
#include "platform/message_port.h"
#include "platform/notification_center.h"
#include "platform/running_application.h"
#include "platform/user_defaults.h"

namespace quorvex {

/// What the purge needs of the platform. All on one thread and one bus.
struct HelpCacheServices {
  std::shared_ptr<NotificationCenter> notifications;
  std::shared_ptr<MessagePorts> messagePorts;
  std::shared_ptr<RunningApplications> applications;
  std::shared_ptr<UserDefaults> userDefaults;
  CallLimits requestLimits;
};

/// The session bus and the home folder of the user. `limits` holds for daemon and browser.
HelpCacheServices userHelpCacheServices(CallLimits limits = {});

/// Resets the help system for the current user: has the help daemon shut down, ends the help
/// browser, deletes their caches, preferences and user-defaults domains. Everything happens on the
/// calling thread before the call returns; messages go to standard output.
class QXHelpCacheManager {
 public:
  /// Gets the outcome as status title and message, each message with its own line ends.
  using CompletionHandler =
      std::function<void(const std::string& title, const std::string& message)>;

  /// Observes the daemon's notification while the shutdown request waits for its reply.
  explicit QXHelpCacheManager(HelpCacheServices services = userHelpCacheServices());

  /// The whole purge.
  void shutdownAndClear();

  /// Without a daemon to ask, prints so and leaves the handler uncalled.
  void shutdownFolliod(const CompletionHandler& handler);
  static void folliodWillTerminate(const Notification& notification);
  void shutdownAndClearHelpCachesWithCompletionHandler(const CompletionHandler& handler);
  void shutdownFolioViewWithCompletionHandler();
  void clearHelpCacheWithCompletionHandler(const CompletionHandler& handler);

  /// True when nothing lies at the path afterwards.
  bool clearCacheAtPath(const std::string& path);

 private:
  bool _clearDefaults();

  HelpCacheServices _services;
  std::shared_ptr<bool> _awaitsReply = std::make_shared<bool>(false);
};

}  // namespace quorvex
