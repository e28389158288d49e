// Stands in for the help daemon and the help browser: stand_in NAME BEHAVIOUR REPLY
//   answer     replies to a request          announce  posts the notification, then replies
//   refuse     replies with an error         silent    never replies
//   vanish     ends without a reply          quit      replies to ActivateAction, then ends

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <systemd/sd-bus.h>
#include <unistd.h>

namespace {

struct Behaviour {
  std::string name;
  std::string reply;
};

/// Acts before a reply; returns a negative error.
int behave(const Behaviour& behaviour, sd_bus_message* call, bool understood, sd_bus_error* error) {
  if (behaviour.name == "announce") {
    sd_bus_emit_signal(sd_bus_message_get_bus(call), "/com/corvane/DistributedNotificationCenter",
                       "com.corvane.DistributedNotificationCenter", "Notification", "ssa{sv}",
                       "FVDHelpDataIsTerminating", "", 0);
  }
  if (behaviour.name == "vanish") ::_exit(0);
  if (behaviour.name == "silent") ::pause();
  if (understood && behaviour.name != "refuse") return 0;
  return sd_bus_error_set(error, "com.corvane.Refused", "no");
}

int onRequest(sd_bus_message* call, void* context, sd_bus_error* error) {
  const auto& behaviour = *static_cast<const Behaviour*>(context);
  std::int32_t id = 0;
  const void* payload = nullptr;
  std::size_t size = 0;
  sd_bus_message_read(call, "i", &id);
  sd_bus_message_read_array(call, 'y', &payload, &size);
  if (const int r = behave(behaviour, call, id == 13 && size == 0, error); r < 0) return r;
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  sd_bus_message_append_array(reply, 'y', behaviour.reply.data(), behaviour.reply.size());
  const int sent = sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return sent;
}

int onActivateAction(sd_bus_message* call, void* context, sd_bus_error* error) {
  const auto& behaviour = *static_cast<const Behaviour*>(context);
  const char* action = "";
  sd_bus_message_read(call, "s", &action);
  bool understood = std::string(action) == "quit";
  for (const char* type : {"v", "{sv}"}) {
    sd_bus_message_enter_container(call, 'a', type);
    understood = understood && sd_bus_message_at_end(call, 0) > 0;
    sd_bus_message_exit_container(call);
  }
  if (const int r = behave(behaviour, call, understood, error); r < 0) return r;
  const int sent = sd_bus_reply_method_return(call, "");
  if (behaviour.name == "quit") {
    sd_bus_flush(sd_bus_message_get_bus(call));
    std::exit(0);
  }
  return sent;
}

const sd_bus_vtable portMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Request", "iay", "ay", onRequest, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};
const sd_bus_vtable applicationMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", onActivateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

int main(int, char** argv) {
  Behaviour behaviour{argv[2], argv[3]};
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0 ||
      sd_bus_add_object_vtable(bus, nullptr, "/com/corvane/MessagePort", "com.corvane.MessagePort",
                               portMethods, &behaviour) < 0 ||
      sd_bus_add_object_vtable(bus, nullptr, "/com/corvane/folioview",
                               "org.freedesktop.Application", applicationMethods, &behaviour) < 0 ||
      sd_bus_request_name(bus, argv[1], 0) < 0) {
    return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  while (sd_bus_process(bus, nullptr) >= 0)
    sd_bus_wait(bus, UINT64_MAX);
}
