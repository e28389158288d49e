#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "common/descriptor.h"

namespace quorvex::view {

/// A request, as far as the view looks at it.
struct Request {
  std::string method;
  std::string host;   ///< as sent; empty if there is none
  std::string path;   ///< of the target as sent, still percent-encoded; begins with "/"
  std::string query;  ///< behind "?", as sent
  /// Names in lower case; of several equal ones the first.
  std::map<std::string, std::string, std::less<>> headers;
};

/// A stretch of an open file.
struct FileBody {
  std::shared_ptr<const Descriptor> file;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// To a HEAD request the same as to GET, and with 304 the same as with 200: the server then tells
/// the size of the body and leaves it out.
struct Response {
  unsigned status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::variant<std::string, FileBody> body;
};

/// Answers requests, from several threads at once. If it throws, the client is told to come back.
using Handler = std::function<Response(const Request&)>;

/// The value of a header by its name in lower case; null if it was not sent.
inline const std::string* headerOf(const Request& request, std::string_view name) {
  const auto found = request.headers.find(name);
  return found == request.headers.end() ? nullptr : &found->second;
}

}  // namespace quorvex::view
