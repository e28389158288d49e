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

/// The platform services of the purge, all on one thread and one bus.
struct HelpCacheServices {
  std::shared_ptr<NotificationCenter> notifications;
  std::shared_ptr<MessagePorts> messagePorts;
  std::shared_ptr<RunningApplications> applications;
  std::shared_ptr<UserDefaults> userDefaults;
  CallLimits requestLimits;
};

/// Uses the user's session bus and home folder. `limits` applies to requests to both daemon and
/// browser.
HelpCacheServices userHelpCacheServices(CallLimits limits = {});

/// Resets the help system for the current user: shuts down the help daemon, quits the help browser,
/// and deletes their caches, preferences and user-defaults domains. Runs synchronously on the
/// calling thread; messages go to standard output.
class QXHelpCacheManager {
 public:
  /// Receives a status title and a message that includes its line ends.
  using CompletionHandler =
      std::function<void(const std::string& title, const std::string& message)>;

  /// Observes the daemon's notification while the shutdown request waits for its reply.
  explicit QXHelpCacheManager(HelpCacheServices services = userHelpCacheServices());

  /// The whole purge.
  void shutdownAndClear();

  /// Without a daemon, prints a message and does not call the handler.
  void shutdownFolliod(const CompletionHandler& handler);
  static void folliodWillTerminate(const Notification& notification);
  void shutdownAndClearHelpCachesWithCompletionHandler(const CompletionHandler& handler);
  void shutdownFolioViewWithCompletionHandler();
  void clearHelpCacheWithCompletionHandler(const CompletionHandler& handler);

  /// True when nothing exists at the path afterwards.
  bool clearCacheAtPath(const std::string& path);

 private:
  bool _clearDefaults();

  HelpCacheServices _services;
  std::shared_ptr<bool> _awaitsReply = std::make_shared<bool>(false);
};

}  // namespace quorvex
