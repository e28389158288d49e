#include "platform/session_bus.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>

#include <poll.h>
#include <systemd/sd-bus.h>

#include "common/system_error.h"

namespace quorvex {
namespace {

using std::chrono::microseconds;

constexpr unsigned mostLateMessages = 100;

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct ReleaseSlot {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
struct ReleaseMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;
using Slot = std::unique_ptr<sd_bus_slot, ReleaseSlot>;
using Message = std::unique_ptr<sd_bus_message, ReleaseMessage>;

std::uint64_t inMicroseconds(std::chrono::milliseconds time) {
  return static_cast<std::uint64_t>(microseconds(time).count());
}

// Writing. Each function returns false if the bus cannot carry the value.

template <typename T>
bool appendBasic(sd_bus_message* message, char type, const T* value) {
  return sd_bus_message_append_basic(message, type, value) >= 0;
}

bool appendText(sd_bus_message* message, const std::string& text) {
  return appendBasic(message, 's', text.c_str());
}

/// Returns the variant type for the value; null for kinds not sent in variants.
const char* variantType(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::string:
      return "s";
    case Value::Kind::integer:
      return "x";
    case Value::Kind::real:
      return "d";
    case Value::Kind::boolean:
      return "b";
    default:
      return nullptr;
  }
}

bool appendVariant(sd_bus_message* message, const char* type, const Value& value) {
  if (sd_bus_message_open_container(message, 'v', type) < 0) return false;
  bool written = false;
  if (const auto* text = value.string()) {
    written = appendText(message, *text);
  } else if (const auto* integer = value.integer()) {
    written = appendBasic(message, 'x', integer);
  } else if (const auto* real = value.real()) {
    written = appendBasic(message, 'd', real);
  } else if (const auto* flag = value.boolean()) {
    const int number = *flag ? 1 : 0;
    written = appendBasic(message, 'b', &number);
  }
  return written && sd_bus_message_close_container(message) >= 0;
}

bool appendVariants(sd_bus_message* message, const Array& values) {
  if (sd_bus_message_open_container(message, 'a', "v") < 0) return false;
  for (const Value& value : values) {
    const char* type = variantType(value);
    if (type != nullptr && !appendVariant(message, type, value)) return false;
  }
  return sd_bus_message_close_container(message) >= 0;
}

bool appendDictionary(sd_bus_message* message, const Dictionary& entries) {
  if (sd_bus_message_open_container(message, 'a', "{sv}") < 0) return false;
  for (const auto& [key, value] : entries) {
    const char* type = variantType(value);
    if (type == nullptr) continue;
    if (sd_bus_message_open_container(message, 'e', "sv") < 0 || !appendText(message, key) ||
        !appendVariant(message, type, value) || sd_bus_message_close_container(message) < 0) {
      return false;
    }
  }
  return sd_bus_message_close_container(message) >= 0;
}

/// Consumes the first type of the signature.
bool appendValue(sd_bus_message* message, std::string_view& signature, const Value& value) {
  const auto next = [&](std::string_view type) {
    if (!signature.starts_with(type)) return false;
    signature.remove_prefix(type.size());
    return true;
  };
  if (const auto* text = value.string(); text != nullptr && next("s")) {
    return appendText(message, *text);
  }
  if (const auto* integer = value.integer(); integer != nullptr && next("i")) {
    const auto number = static_cast<std::int32_t>(*integer);
    return appendBasic(message, 'i', &number);
  }
  if (const auto* data = value.data(); data != nullptr && next("ay")) {
    return sd_bus_message_append_array(message, 'y', data->bytes().data(), data->size()) >= 0;
  }
  if (const auto* array = value.array(); array != nullptr && next("av")) {
    return appendVariants(message, *array);
  }
  if (const auto* entries = value.dictionary(); entries != nullptr && next("a{sv}")) {
    return appendDictionary(message, *entries);
  }
  return false;
}

bool append(sd_bus_message* message, const BusArguments& arguments) {
  std::string_view signature = arguments.signature;
  return std::all_of(arguments.values.begin(), arguments.values.end(),
                     [&](const Value& value) { return appendValue(message, signature, value); });
}

// Reading. Functions return nothing if the next value has another type.

template <typename T>
std::optional<T> readBasic(sd_bus_message* message, char type) {
  T value{};
  if (sd_bus_message_read_basic(message, type, &value) <= 0) return std::nullopt;
  return value;
}

std::optional<Value> readSimple(sd_bus_message* message, char type) {
  const auto value = [](const auto& read, auto convert) {
    return read ? std::optional<Value>(convert(*read)) : std::nullopt;
  };
  const auto integer = [](auto number) { return static_cast<std::int64_t>(number); };
  switch (type) {
    case 's':
      return value(readBasic<const char*>(message, type), [](auto text) { return text; });
    case 'i':
      return value(readBasic<std::int32_t>(message, type), integer);
    case 'u':
      return value(readBasic<std::uint32_t>(message, type), integer);
    case 'x':
      return value(readBasic<std::int64_t>(message, type), integer);
    case 'd':
      return value(readBasic<double>(message, type), [](auto real) { return real; });
    case 'b':
      return value(readBasic<int>(message, type), [](auto flag) { return flag != 0; });
    default:
      return std::nullopt;
  }
}

std::optional<Value> readBytes(sd_bus_message* message) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(message, 'y', &bytes, &size) < 0) return std::nullopt;
  return Data(size == 0 ? std::string() : std::string(static_cast<const char*>(bytes), size));
}

/// Omits entries of other types.
std::optional<Value> readDictionary(sd_bus_message* message) {
  Dictionary entries;
  if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return std::nullopt;
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    const auto key = readBasic<const char*>(message, 's');
    char type = 0;
    const char* contents = nullptr;
    if (!key || sd_bus_message_peek_type(message, &type, &contents) <= 0) return std::nullopt;
    const std::string_view held = contents;
    if (held.size() == 1 && std::string_view("siuxdb").find(held) != std::string_view::npos) {
      if (sd_bus_message_enter_container(message, 'v', contents) <= 0) return std::nullopt;
      auto value = readSimple(message, held.front());
      if (!value || sd_bus_message_exit_container(message) < 0) return std::nullopt;
      entries.emplace(*key, *std::move(value));
    } else if (sd_bus_message_skip(message, "v") < 0) {
      return std::nullopt;
    }
    if (sd_bus_message_exit_container(message) < 0) return std::nullopt;
  }
  if (sd_bus_message_exit_container(message) < 0) return std::nullopt;
  return entries;
}

BusArguments read(sd_bus_message* message) {
  BusArguments arguments;
  char type = 0;
  const char* contents = nullptr;
  while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
    std::optional<Value> value;
    std::string signature(1, type);
    if (type == 'a') {
      signature += contents;
      if (signature == "ay") value = readBytes(message);
      if (signature == "a{sv}") value = readDictionary(message);
    } else {
      value = readSimple(message, type);
    }
    if (!value) break;
    arguments.signature += signature;
    arguments.values.push_back(*std::move(value));
  }
  return arguments;
}

// Calls.

CallEnd endOfError(const sd_bus_error& error) {
  // Our own time-outs expire first (the call's is longer), so a missing reply means that the bus
  // saw the callee leave, or that the bus itself is gone.
  if (sd_bus_error_has_name(&error, SD_BUS_ERROR_NO_REPLY) != 0) return CallEnd::calleeGone;
  if (sd_bus_error_has_name(&error, SD_BUS_ERROR_SERVICE_UNKNOWN) != 0 ||
      sd_bus_error_has_name(&error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) != 0) {
    return CallEnd::calleeAbsent;
  }
  return CallEnd::refused;
}

int keepReply(sd_bus_message* reply, void* kept, sd_bus_error* /*error*/) {
  static_cast<Message*>(kept)->reset(sd_bus_message_ref(reply));
  return 1;
}

/// Whether all outgoing messages have been passed to the system.
bool sent(sd_bus* bus) {
  return (sd_bus_get_events(bus) & POLLOUT) == 0;
}

}  // namespace

struct SessionBus::Connection {
  /// Called from C, so no exception may escape.
  struct Handler {
    Connection& connection;
    SignalHandler handle;
    Slot slot;

    static int onSignal(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
      const auto& handler = *static_cast<Handler*>(self);
      try {
        handler.handle(read(message));
      } catch (...) {
        handler.connection.thrown = std::current_exception();
      }
      return 0;
    }
  };

  Wait runUntil(const std::function<bool()>& done, Clock::time_point deadline);
  int waitForTraffic(Clock::time_point deadline) const;

  Bus bus;
  std::exception_ptr thrown;
};

/// Sleeps until there is input, pending output can be written, a signal arrives or time is up.
int SessionBus::Connection::waitForTraffic(Clock::time_point deadline) const {
  // Rounded up, so the last moment is not a busy loop.
  const auto left = std::chrono::ceil<microseconds>(deadline - Clock::now());
  const auto limit = static_cast<std::uint64_t>(std::max(microseconds(0), left).count());
  const int result = sd_bus_wait(bus.get(), limit);
  return result == -EINTR ? 0 : result;
}

SessionBus::Wait SessionBus::Connection::runUntil(const std::function<bool()>& done,
                                                  Clock::time_point deadline) {
  for (unsigned late = 0;;) {
    if (done()) return Wait::done;
    // The clock is checked between messages too: a flood of them must not postpone the deadline.
    // But a process that was scheduled late still handles messages that arrived in time.
    const int handled = sd_bus_process(bus.get(), nullptr);
    if (thrown != nullptr) std::rethrow_exception(std::exchange(thrown, nullptr));
    if (handled < 0) return Wait::lost;
    if (Clock::now() >= deadline && (handled == 0 || ++late == mostLateMessages)) {
      return done() ? Wait::done : Wait::timedOut;
    }
    if (handled == 0 && waitForTraffic(deadline) < 0) return Wait::lost;
  }
}

SessionBus::SessionBus(std::chrono::milliseconds connectLimit) : _connectLimit(connectLimit) {}

SessionBus::~SessionBus() = default;

Status SessionBus::connect() {
  if (!_connected) _connected = open();
  return *_connected;
}

Status SessionBus::open() {
  sd_bus* opened = nullptr;
  if (const int result = sd_bus_open_user(&opened); result < 0) {
    if (result == -ENOMEDIUM) return Error{"There is no session bus"};
    return systemError(-result);
  }
  auto connection = std::make_unique<Connection>(Connection{Bus(opened), nullptr});
  sd_bus_set_method_call_timeout(opened, inMicroseconds(_connectLimit));
  const auto ready = [&] { return sd_bus_is_ready(opened) > 0; };
  switch (connection->runUntil(ready, Clock::now() + _connectLimit)) {
    case Wait::done:
      _connection = std::move(connection);
      return okStatus();
    case Wait::timedOut:
      return Error{"The session bus does not answer"};
    case Wait::lost:
      break;
  }
  return Error{"The session bus refuses the connection"};
}

SessionBus::Wait SessionBus::runUntil(const std::function<bool()>& done,
                                      Clock::time_point deadline) {
  if (!connect()) return Wait::lost;
  return _connection->runUntil(done, deadline);
}

BusReply SessionBus::call(const BusMethod& method, const BusArguments& arguments,
                          const CallLimits& limits) {
  if (!connect()) return {};
  sd_bus* const bus = _connection->bus.get();
  sd_bus_message* created = nullptr;
  if (sd_bus_message_new_method_call(bus, &created, method.destination.c_str(), method.path.c_str(),
                                     method.interface.c_str(), method.name.c_str()) < 0) {
    return {};
  }
  const Message message(created);
  Message reply;
  sd_bus_slot* pending = nullptr;
  const auto longest = inMicroseconds(limits.send + limits.reply + std::chrono::seconds(5));
  const auto start = Clock::now();
  if (!append(created, arguments) ||
      sd_bus_call_async(bus, &pending, created, keepReply, &reply, longest) < 0) {
    return {};
  }
  const Slot slot(pending);

  const auto ended = [&] { return reply != nullptr; };
  auto wait = runUntil([&] { return ended() || sent(bus); }, start + limits.send);
  if (wait == Wait::timedOut) return {CallEnd::sendTimedOut, {}};
  if (wait == Wait::done) {
    wait = runUntil(ended, Clock::now() + limits.reply);
    if (wait == Wait::timedOut) return {CallEnd::replyTimedOut, {}};
  }
  if (wait == Wait::lost) return {};
  const sd_bus_error* error = sd_bus_message_get_error(reply.get());
  if (error == nullptr) return {CallEnd::replied, read(reply.get())};
  const CallEnd end = endOfError(*error);
  // A breaking connection answers pending calls itself before it reports the loss.
  constexpr std::chrono::milliseconds untilLossShows{50};
  const auto never = [] { return false; };
  if (end == CallEnd::calleeGone && runUntil(never, Clock::now() + untilLossShows) == Wait::lost) {
    return {};
  }
  return {end, {}};
}

bool SessionBus::emit(const BusSignal& signal, const BusArguments& arguments) {
  if (!connect()) return false;
  sd_bus* const bus = _connection->bus.get();
  sd_bus_message* created = nullptr;
  if (sd_bus_message_new_signal(bus, &created, signal.path, signal.interface, signal.name) < 0) {
    return false;
  }
  const Message message(created);
  return !append(created, arguments) || sd_bus_send(bus, created, nullptr) >= 0;
}

SessionBus::Subscription SessionBus::subscribe(const BusSignal& signal, SignalHandler handler) {
  if (!connect()) return nullptr;
  const auto subscription = std::make_shared<Connection::Handler>(
      Connection::Handler{*_connection, std::move(handler), nullptr});
  sd_bus_slot* slot = nullptr;
  if (sd_bus_match_signal(_connection->bus.get(), &slot, nullptr, signal.path, signal.interface,
                          signal.name, Connection::Handler::onSignal, subscription.get()) < 0) {
    return nullptr;
  }
  subscription->slot.reset(slot);
  return subscription;
}

}  // namespace quorvex
