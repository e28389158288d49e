#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include <microhttpd.h>

#include "view/http/message.h"

namespace quorvex::view {

struct DestroyReply {
  void operator()(MHD_Response* reply) const { ::MHD_destroy_response(reply); }
};
/// A response as the library for HTTP takes it.
using Reply = std::unique_ptr<MHD_Response, DestroyReply>;

/// Makes replies while their bodies in memory are few enough.
class ReplyMaker {
 public:
  explicit ReplyMaker(std::size_t mostBytes) : _mostBytes(mostBytes) {}

  /// Null if there is no room, memory or descriptor for it. Must outlive the replies.
  Reply make(Response response);

 private:
  struct Held;

  Reply ofBytes(std::string bytes);

  const std::size_t _mostBytes;
  std::atomic<std::size_t> _bytes = 0;
};

}  // namespace quorvex::view
