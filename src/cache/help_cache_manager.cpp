#include "cache/help_cache_manager.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "common/files.h"
#include "common/format.h"
#include "common/output.h"
#include "platform/file_removal.h"
#include "platform/keyed_archive.h"
#include "platform/session_bus.h"

namespace quorvex {
namespace {

constexpr const char* daemonPort = "com.corvane.folliod";
constexpr const char* viewerIdentifier = "com.corvane.folioview";
constexpr const char* daemonTerminating = "FVDHelpDataIsTerminating";
constexpr const char* daemonFailedToTerminate = "FVDHelpDataFailedToTerminate";
constexpr std::int32_t shutdownRequest = 13;

// Cleared in this order.
constexpr std::array<const char*, 4> cachePaths{
    "~/Library/Caches/com.corvane.folliod/",
    "~/Library/Containers/com.corvane.folioview/",
    "~/Library/Preferences/com.corvane.help.kvdoc",
    "~/Library/Preferences/com.corvane.folliod.kvdoc",
};
constexpr std::array<const char*, 3> defaultsDomains{
    "com.corvane.help",
    "com.corvane.folliod",
    "com.corvane.folioview",
};

/// Returns the daemon's reply if it is a string, else nothing.
std::optional<std::string> decodeResponse(std::string_view bytes) {
  const auto archive = unarchiveKeyed(bytes, AllowedKinds{"string"});
  if (!archive || archive->string() == nullptr) return std::nullopt;
  return *archive->string();
}

void printOutcome(const std::string& title, const std::string& message) {
  writeText(formatText("%@: %@", {title, message}));
}

}  // namespace

HelpCacheServices userHelpCacheServices(CallLimits limits) {
  auto bus = std::make_shared<SessionBus>();
  return {distributedNotificationCenter(bus), busMessagePorts(bus),
          busRunningApplications(bus, limits), standardUserDefaults(), limits};
}

QXHelpCacheManager::QXHelpCacheManager(HelpCacheServices services)
    : _services(std::move(services)) {
  // Other calls run the event loop too, and any process may post this name. The registration may
  // outlive the manager, so it captures only the shared flag.
  _services.notifications->addObserver(
      daemonTerminating, [awaitsReply = _awaitsReply](const Notification& notification) {
        if (*awaitsReply) folliodWillTerminate(notification);
      });
}

void QXHelpCacheManager::shutdownAndClear() {
  shutdownFolliod([this](const std::string& status, const std::string& message) {
    if (status != daemonTerminating) {
      writeText(
          formatText("\n%@: %@Folio View and folliod cache files were not cleared, see logs "
                     "for details\n",
                     {status, message}));
      return;
    }
    printOutcome(status, message);
    shutdownAndClearHelpCachesWithCompletionHandler(printOutcome);
  });
}

void QXHelpCacheManager::shutdownFolliod(const CompletionHandler& handler) {
  const auto port = _services.messagePorts->remotePort(daemonPort);
  if (!port || !port->isValid()) {
    writeText("Unable to create folliod message port");
    return;
  }
  *_awaitsReply = true;
  const MessagePortReply reply = port->sendRequest(shutdownRequest, {}, _services.requestLimits);
  *_awaitsReply = false;
  std::string status = daemonFailedToTerminate;
  std::string message;
  if (reply.status == MessagePortStatus::success && !reply.data.empty()) {
    const auto response = decodeResponse(reply.data);
    if (response == daemonTerminating) {
      status = daemonTerminating;
      message = "Shutdown request successfully sent to folliod\n";
    } else {
      message = formatText("Shutdown request to folliod failed with response: %@\n", {response});
    }
  } else {
    message = formatText("Shutdown request to folliod failed with response: %d\n",
                         {static_cast<int>(reply.status)});
  }
  if (handler) handler(status, message);
}

void QXHelpCacheManager::folliodWillTerminate(const Notification&) {
  writeText("Received termination response from folliod\n");
}

void QXHelpCacheManager::shutdownAndClearHelpCachesWithCompletionHandler(
    const CompletionHandler& handler) {
  shutdownFolioViewWithCompletionHandler();
  clearHelpCacheWithCompletionHandler(handler);
}

void QXHelpCacheManager::shutdownFolioViewWithCompletionHandler() {
  const auto viewers = _services.applications->withIdentifier(viewerIdentifier);
  if (viewers.empty()) return;
  if (viewers.front()->terminate()) {
    writeText("FolioView terminated\n");
  } else if (viewers.front()->forceTerminate()) {
    writeText("FolioView force terminated\n");
  }
}

void QXHelpCacheManager::clearHelpCacheWithCompletionHandler(const CompletionHandler& handler) {
  std::string title = "Caches Cleared";
  std::string message = "Folio View and folliod cache files and preferences have been cleared\n";
  bool cleared = true;
  for (const char* path : cachePaths) {
    cleared = clearCacheAtPath(path);
    if (!cleared) break;
  }
  if (!cleared) {
    title = "Caches not cleared";
    message =
        "There was a problem clearing Folio View and folliod cache files, see logs for details\n";
  } else if (!_clearDefaults()) {
    title = "Defaults not cleared";
    message =
        "There was a problem clearing Folio View and folliod defaults, see logs for details\n";
  }
  if (handler) handler(title, message);
}

bool QXHelpCacheManager::clearCacheAtPath(const std::string& path) {
  const std::string expanded = expandTilde(path);
  // If the home folder is unknown, the tilde stays. The path would then name something in the
  // current folder that is not ours; removeItem refuses it.
  if (expanded.starts_with('/') && !itemExists(expanded)) return true;
  const Status removed = removeItem(expanded);
  if (removed) return true;
  writeText(
      formatText("Unable to clear caches at path: %@\nError: %@\n", {expanded, removed.error()}));
  return false;
}

/// Reads the domains back to find out whether it worked.
bool QXHelpCacheManager::_clearDefaults() {
  UserDefaults& defaults = *_services.userDefaults;
  for (const char* domain : defaultsDomains) {
    static_cast<void>(defaults.removePersistentDomain(domain));
  }
  static_cast<void>(defaults.synchronize());
  bool cleared = true;
  for (const char* domain : defaultsDomains) {
    cleared = !defaults.persistentDomain(domain) && cleared;
  }
  return cleared;
}

}  // namespace quorvex
