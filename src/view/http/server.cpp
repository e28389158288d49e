#include "view/http/server.h"

#include <atomic>
#include <cerrno>
#include <exception>
#include <string_view>

#include <fcntl.h>
#include <microhttpd.h>

#include "common/system_error.h"
#include "view/http/deadlines.h"
#include "view/http/reply.h"

namespace quorvex::view {

namespace {

using Clock = std::chrono::steady_clock;

// For each of the two sockets.
constexpr unsigned threads = 4;
constexpr unsigned mostConnections = 128;
/// Holds the request's target and headers; a longer request is refused.
constexpr std::size_t bytesPerConnection = std::size_t{32} * 1024;

struct StopDaemon {
  void operator()(MHD_Daemon* daemon) const { ::MHD_stop_daemon(daemon); }
};
using Daemon = std::unique_ptr<MHD_Daemon, StopDaemon>;

/// A request whose target has been read.
struct Begun {
  std::string target;
  bool hasHeaders = false;
};

struct Received {
  Request request;
  unsigned hosts = 0;
  bool hasBody = false;
};

std::string lowerCase(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

/// Throws nothing, as it is called by C code; without memory it takes no further headers.
MHD_Result takeHeader(void* received, MHD_ValueKind /*kind*/, const char* name,
                      const char* value) noexcept {
  try {
    auto& into = *static_cast<Received*>(received);
    std::string lower = lowerCase(name);
    const std::string_view text = value != nullptr ? value : "";
    if (lower == "host" && ++into.hosts == 1) into.request.host = text;
    if (lower == "transfer-encoding" || (lower == "content-length" && text != "0")) {
      into.hasBody = true;
    }
    into.request.headers.emplace(std::move(lower), text);
    return MHD_YES;
  } catch (const std::bad_alloc&) {
    return MHD_NO;
  }
}

Response refusal(unsigned status, std::string reason) {
  return {status,
          {{"Content-Type", "text/plain; charset=utf-8"}, {"Cache-Control", "no-store"}},
          std::move(reason)};
}

Response busy() {
  Response response = refusal(503, "Not possible now.\n");
  response.headers.emplace_back("Retry-After", "1");
  return response;
}

}  // namespace

struct Server::Running {
  Running(Listener ofServer, Handler itsHandler, Limits limits)
      : listener(std::move(ofServer)),
        handler(std::move(itsHandler)),
        replies(limits.bytesInMemory),
        deadlines(limits.request) {}

  Daemon daemonFor(const Descriptor& socket, Limits limits);
  MHD_Result answer(MHD_Connection* connection, const char* method, Begun& begun);
  static MHD_Result queue(MHD_Connection* connection, unsigned status, const Reply& reply);
  Response responseTo(Received& received, const std::string& target) const;

  // Called by the library, with this object first.
  static void* onTarget(void* self, const char* target, MHD_Connection* connection) noexcept;
  static MHD_Result onRequest(void* self, MHD_Connection* connection, const char* url,
                              const char* method, const char* version, const char* body,
                              std::size_t* bodySize, void** begun) noexcept;
  static void onCompleted(void* self, MHD_Connection* connection, void** begun,
                          MHD_RequestTerminationCode how) noexcept;
  static void onConnection(void* self, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode what) noexcept;

  Listener listener;
  Handler handler;
  std::atomic<Clock::rep> lastRequest = Clock::now().time_since_epoch().count();
  ReplyMaker replies;
  Deadlines deadlines;
  std::vector<Daemon> daemons;  ///< use all of the above, so they end first
};

void* Server::Running::onTarget(void* /*self*/, const char* target,
                                MHD_Connection* /*connection*/) noexcept {
  try {
    return std::make_unique<Begun>(Begun{target, false}).release();
  } catch (const std::bad_alloc&) {
    return nullptr;  // ends the connection as soon as the request is complete
  }
}

MHD_Result Server::Running::onRequest(void* self, MHD_Connection* connection, const char* /*url*/,
                                      const char* method, const char* /*version*/,
                                      const char* /*body*/, std::size_t* /*bodySize*/,
                                      void** begun) noexcept {
  if (*begun == nullptr) return MHD_NO;
  try {
    return static_cast<Running*>(self)->answer(connection, method, *static_cast<Begun*>(*begun));
  } catch (const std::bad_alloc&) {
    return MHD_NO;
  }
}

void Server::Running::onCompleted(void* self, MHD_Connection* connection, void** begun,
                                  MHD_RequestTerminationCode /*how*/) noexcept {
  delete static_cast<Begun*>(std::exchange(*begun, nullptr));
  static_cast<Running*>(self)->deadlines.expectNext(connection);
}

void Server::Running::onConnection(void* self, MHD_Connection* connection, void** /*context*/,
                                   MHD_ConnectionNotificationCode what) noexcept {
  Deadlines& deadlines = static_cast<Running*>(self)->deadlines;
  if (what == MHD_CONNECTION_NOTIFY_CLOSED) return deadlines.forget(connection);
  const MHD_ConnectionInfo* info =
      ::MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  if (info == nullptr) return;
  try {
    deadlines.expect(connection, info->connect_fd);
  } catch (const std::bad_alloc&) {
    ::shutdown(info->connect_fd, SHUT_RDWR);
  }
}

Response Server::Running::responseTo(Received& received, const std::string& target) const {
  Request& request = received.request;
  // With two hosts, who decides by the other one would be deceived. Targets that are no paths are
  // for proxies.
  if (received.hosts != 1 || !target.starts_with('/')) return refusal(400, "Bad request.\n");
  const bool reads = request.method == "GET" || request.method == "HEAD";
  if (received.hasBody && reads) return refusal(413, "A request may have no body.\n");
  const std::size_t question = target.find('?');
  request.path = target.substr(0, question);
  if (question != target.npos) request.query = target.substr(question + 1);
  try {
    return handler(request);
  } catch (const std::exception&) {  // no memory, or no thread
    return busy();
  }
}

MHD_Result Server::Running::answer(MHD_Connection* connection, const char* method, Begun& begun) {
  Received received;
  received.request.method = method;
  const int headers = ::MHD_get_connection_values(connection, MHD_HEADER_KIND, nullptr, nullptr);
  if (::MHD_get_connection_values(connection, MHD_HEADER_KIND, &takeHeader, &received) < headers) {
    return MHD_NO;
  }
  if (!std::exchange(begun.hasHeaders, true)) {
    deadlines.arrived(connection);
    lastRequest = Clock::now().time_since_epoch().count();
    // The reply may be queued now, if the rest of the request is not to be read, or in the next
    // call.
    if (!received.hasBody) return MHD_YES;
  }
  Response response = responseTo(received, begun.target);
  if (received.hasBody) response.headers.emplace_back("Connection", "close");
  const unsigned status = response.status;
  if (const Reply reply = replies.make(std::move(response))) {
    return queue(connection, status, reply);
  }
  const Reply reply = replies.make(busy());
  return reply ? queue(connection, 503, reply) : MHD_NO;
}

MHD_Result Server::Running::queue(MHD_Connection* connection, unsigned status, const Reply& reply) {
  return ::MHD_queue_response(connection, status, reply.get());
}

Daemon Server::Running::daemonFor(const Descriptor& socket, Limits limits) {
  const int own = ::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0);  // it is closed with the daemon
  if (own < 0) return nullptr;
  return Daemon(::MHD_start_daemon(
      MHD_USE_EPOLL_INTERNAL_THREAD, listener.port(), nullptr, nullptr, &onRequest, this,
      MHD_OPTION_LISTEN_SOCKET, own, MHD_OPTION_THREAD_POOL_SIZE, threads,
      MHD_OPTION_CONNECTION_LIMIT, mostConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
      bytesPerConnection, MHD_OPTION_CONNECTION_TIMEOUT,
      static_cast<unsigned>(limits.silence.count()), MHD_OPTION_URI_LOG_CALLBACK, &onTarget, this,
      MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, this, MHD_OPTION_NOTIFY_CONNECTION, &onConnection,
      this, MHD_OPTION_END));
}

Result<std::unique_ptr<Server>> Server::start(Listener listener, Handler handler, Limits limits) {
  auto running = std::make_unique<Running>(std::move(listener), std::move(handler), limits);
  for (const Descriptor& socket : running->listener.sockets()) {
    errno = 0;
    running->daemons.push_back(running->daemonFor(socket, limits));
    if (!running->daemons.back()) return systemError(errno != 0 ? errno : ENOMEM);
  }
  return std::unique_ptr<Server>(new Server(std::move(running)));
}

Server::Server(std::unique_ptr<Running> running) : _running(std::move(running)) {}
Server::~Server() = default;

Clock::time_point Server::lastRequest() const {
  return Clock::time_point(Clock::duration(_running->lastRequest.load()));
}

}  // namespace quorvex::view
