#pragma once

#include <string_view>

#include "view/http/message.h"

namespace quorvex::view {

/// Answers a request for a file of the interface; 404 if there is none of this name.
Response assetReply(std::string_view name, const Request& request);

}  // namespace quorvex::view
