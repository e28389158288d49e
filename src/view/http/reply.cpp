#include "view/http/reply.h"

#include <algorithm>

#include <fcntl.h>

namespace quorvex::view {

namespace {

/// So small a body fits even when a large page fills everything: connections are few.
constexpr std::size_t alwaysRoom = std::size_t{64} * 1024;

Reply ofFile(const FileBody& body) {
  const int own = ::fcntl(body.file->get(), F_DUPFD_CLOEXEC, 0);
  if (own < 0) return nullptr;
  Reply reply(::MHD_create_response_from_fd_at_offset64(body.size, own, body.offset));
  if (!reply) ::close(own);
  return reply;
}

}  // namespace

/// A body, counted as long as it is held.
struct ReplyMaker::Held {
  Held(ReplyMaker& replyMaker, std::string body) : maker(replyMaker), bytes(std::move(body)) {
    maker._bytes += bytes.size();
  }
  ~Held() { maker._bytes -= bytes.size(); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  static void release(void* held) { delete static_cast<Held*>(held); }

  ReplyMaker& maker;
  std::string bytes;
};

Reply ReplyMaker::ofBytes(std::string bytes) {
  if (bytes.empty()) {
    return Reply(::MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
  }
  const std::size_t others = _bytes;
  if (others > 0 && bytes.size() > alwaysRoom &&
      bytes.size() > _mostBytes - std::min(others, _mostBytes)) {
    return nullptr;
  }
  Held* const held = std::make_unique<Held>(*this, std::move(bytes)).release();
  Reply reply(::MHD_create_response_from_buffer_with_free_callback_cls(
      held->bytes.size(), held->bytes.data(), &Held::release, held));
  if (!reply) Held::release(held);
  return reply;
}

Reply ReplyMaker::make(Response response) {
  auto* bytes = std::get_if<std::string>(&response.body);
  Reply reply =
      bytes != nullptr ? ofBytes(std::move(*bytes)) : ofFile(std::get<FileBody>(response.body));
  if (!reply) return nullptr;
  for (const auto& [name, value] : response.headers) {
    if (::MHD_add_response_header(reply.get(), name.c_str(), value.c_str()) != MHD_YES) {
      return nullptr;
    }
  }
  return reply;
}

}  // namespace quorvex::view
