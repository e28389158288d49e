// Stands in for the help daemon and the help browser: stand_in NAME BEHAVIOUR [REPLY IN HEX]
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

Bytes fromHex(const std::string& text) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

template <typename... T>
void respond(const std::string& behaviour, sdbus::Result<T...>&& result, const T&... values) {
  static std::vector<sdbus::Result<T...>> unanswered;
  if (behaviour == "vanish") ::_exit(0);
  if (behaviour == "silent") {
    unanswered.push_back(std::move(result));
  } else if (behaviour == "refuse") {
    result.returnError(sdbus::Error("com.corvane.Refused", "no"));
  } else {
    result.returnResults(values...);
  }
}

}  // namespace

int main(int, char** argv) {
  const std::string name = argv[1];
  const std::string behaviour = argv[2];
  const Bytes answer = fromHex(argv[3]);
  const auto connection = sdbus::createSessionBusConnection();

  const auto center =
      sdbus::createObject(*connection, "/com/corvane/DistributedNotificationCenter");
  const auto port = sdbus::createObject(*connection, "/com/corvane/MessagePort");
  port->registerMethod("Request")
      .onInterface("com.corvane.MessagePort")
      .implementedAs([&](sdbus::Result<Bytes>&& result, std::int32_t id, const Bytes& payload) {
        if (behaviour == "announce") {
          center->emitSignal("Notification")
              .onInterface("com.corvane.DistributedNotificationCenter")
              .withArguments(std::string("FVDHelpDataIsTerminating"), std::string(),
                             std::map<std::string, sdbus::Variant>());
        }
        const bool expected = id == 13 && payload.empty();
        respond(expected ? behaviour : "refuse", std::move(result), answer);
      });
  port->finishRegistration();

  const auto application = sdbus::createObject(*connection, "/com/corvane/folioview");
  application->registerMethod("ActivateAction")
      .onInterface("org.freedesktop.Application")
      .implementedAs([&](sdbus::Result<>&& result, const std::string& action,
                         const std::vector<sdbus::Variant>& parameters,
                         const std::map<std::string, sdbus::Variant>& platformData) {
        const bool expected = action == "quit" && parameters.empty() && platformData.empty();
        respond(expected ? behaviour : "refuse", std::move(result));
        if (behaviour == "quit") connection->leaveEventLoop();
      });
  application->finishRegistration();

  connection->requestName(name);
  std::puts("ready");
  std::fflush(stdout);
  connection->enterEventLoop();
}
