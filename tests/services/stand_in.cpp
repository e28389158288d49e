// Stands in for the help daemon and the help browser: stand_in NAME BEHAVIOUR REPLY
//   answer     replies to a request          announce  posts the notification, then replies
//   refuse     replies with an error         silent    never replies
//   vanish     ends without a reply          quit      replies to ActivateAction, then ends

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// What comes before a reply, if one comes at all.
void behave(const std::string& behaviour) {
  if (behaviour == "vanish") ::_exit(0);
  if (behaviour == "silent") ::pause();
  if (behaviour == "refuse") throw sdbus::Error("com.corvane.Refused", "no");
}

}  // namespace

int main(int, char** argv) {
  const std::string name = argv[1];
  const std::string behaviour = argv[2];
  const std::string text = argv[3];
  const Bytes answer(text.begin(), text.end());
  const auto connection = sdbus::createSessionBusConnection();

  const auto center =
      sdbus::createObject(*connection, "/com/corvane/DistributedNotificationCenter");
  const auto port = sdbus::createObject(*connection, "/com/corvane/MessagePort");
  port->registerMethod("Request")
      .onInterface("com.corvane.MessagePort")
      .implementedAs([&](std::int32_t id, const Bytes& payload) {
        behave(id == 13 && payload.empty() ? behaviour : "refuse");
        if (behaviour == "announce") {
          center->emitSignal("Notification")
              .onInterface("com.corvane.DistributedNotificationCenter")
              .withArguments(std::string("FVDHelpDataIsTerminating"), std::string(),
                             std::map<std::string, sdbus::Variant>());
        }
        return answer;
      });
  port->finishRegistration();

  const auto application = sdbus::createObject(*connection, "/com/corvane/folioview");
  application->registerMethod("ActivateAction")
      .onInterface("org.freedesktop.Application")
      .implementedAs([&](const std::string& action, const std::vector<sdbus::Variant>& parameters,
                         const std::map<std::string, sdbus::Variant>& platformData) {
        behave(action == "quit" && parameters.empty() && platformData.empty() ? behaviour
                                                                              : "refuse");
        if (behaviour == "quit") connection->leaveEventLoop();
      });
  application->finishRegistration();

  connection->requestName(name);
  std::puts("ready");
  std::fflush(stdout);
  connection->enterEventLoop();
}
