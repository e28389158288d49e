#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "view/http/message.h"

namespace quorvex::view {

/// The two origins: the interface, and the book, whose pages are strangers to it.
struct Origins {
  std::uint16_t port = 0;
  std::string viewSecret;     ///< in the interface's addresses
  std::string bookSecret;     ///< the name of the book's host
  bool allowNetwork = false;  ///< lets the book's pages load from other hosts
};

/// "http://NAME:PORT" of the book's pages.
std::string bookOrigin(const Origins& origins);
/// The address of the interface's page.
std::string viewAddress(const Origins& origins);

/// Decides which requests are answered at all, and gives every answer the headers of its origin.
class Site {
 public:
  /// `view` gets the path behind the secret and its slash ("", "search"), `book` the path in the
  /// book ("/a/b.html"); both still encoded.
  Site(const Origins& origins, Handler view, Handler book);

  Response answer(const Request& request) const;

 private:
  using Headers = std::vector<std::pair<std::string, std::string>>;

  Response answerOfView(const Request& request) const;
  Response answerOfBook(const Request& request) const;
  /// Refuses whoever does not know the secret: names neither of the two.
  Response refused(Response response) const;

  std::string _viewSecret;
  std::array<std::string, 2> _viewHosts;
  std::string _bookHost;
  std::string _viewPolicy;
  std::string _bookPolicy;
  Headers _commonHeaders;  ///< of the interface and of refusals
  Headers _bookHeaders;
  Handler _view;
  Handler _book;
};

}  // namespace quorvex::view
