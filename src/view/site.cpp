#include "view/site.h"

#include <algorithm>
#include <string_view>

namespace quorvex::view {

namespace {

using Headers = std::vector<std::pair<std::string, std::string>>;

/// Compares without telling by its time how much is right.
bool isSecret(std::string_view sent, std::string_view secret) {
  if (sent.size() != secret.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < sent.size(); ++i)
    difference |= static_cast<unsigned char>(sent[i] ^ secret[i]);
  return difference == 0;
}

std::string atPort(std::string_view host, std::uint16_t port) {
  return std::string(host) + ':' + std::to_string(port);
}

Response page(unsigned status, std::string_view title, std::string_view text) {
  std::string html("<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\"><title>");
  html.append(title).append("</title>\n<h1>").append(title).append("</h1>\n<p>").append(text);
  html += "</p>\n";
  return {status, {{"Content-Type", "text/html; charset=utf-8"}}, std::move(html)};
}

Response notFound() {
  return page(404, "Not found", "There is nothing at this address.");
}

std::string headerOrNothing(const Request& request, std::string_view name) {
  const std::string* value = headerOf(request, name);
  return value != nullptr ? *value : std::string();
}

bool isNavigation(const Request& request) {
  return headerOrNothing(request, "sec-fetch-mode") == "navigate" &&
         headerOrNothing(request, "sec-fetch-dest") == "document";
}

/// Whether another site makes the browser send this. Old browsers do not tell.
bool isForeign(const Request& request) {
  const std::string site = headerOrNothing(request, "sec-fetch-site");
  return !site.empty() && site != "same-origin" && site != "none";
}

std::string policyOfView(const std::string& book) {
  return "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
         "connect-src 'self'; frame-src " +
         book + "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

/// Names the host, as 'self' matches nothing in a frame with an origin of its own.
std::string policyOfBook(const std::string& book, std::uint16_t port, bool allowNetwork) {
  const std::string from = book + (allowNetwork ? " https: http: wss: ws:" : "");
  const std::string views =
      "http://" + atPort("127.0.0.1", port) + " http://" + atPort("[::1]", port);
  std::string policy = "default-src 'none'; script-src " + from;
  policy += " 'unsafe-inline' 'unsafe-eval' data: blob:; style-src " + from;
  policy += " 'unsafe-inline' data:; img-src " + from + " data: blob:; font-src " + from;
  policy += " data:; media-src " + from + " data: blob:; connect-src " + from;
  policy += " data: blob:; worker-src " + from + " blob: data:; frame-src " + from;
  policy += " data: blob:; manifest-src " + from + "; object-src 'none'; base-uri " + book;
  policy += "; form-action " + book + "; frame-ancestors " + views + " " + book;
  return policy + "; webrtc 'block'; sandbox allow-scripts allow-forms allow-downloads";
}

/// The policy of the interface names the book's host, which is a secret.
constexpr const char* policyOfRefusals =
    "default-src 'none'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

Response finished(Response response, const Headers& headers, const std::string& policy) {
  const auto isCaching = [](const auto& header) { return header.first == "Cache-Control"; };
  const bool isCached = std::ranges::any_of(response.headers, isCaching);
  if (!isCached) response.headers.emplace_back("Cache-Control", "no-store");
  response.headers.emplace_back("Content-Security-Policy", policy);
  response.headers.insert(response.headers.end(), headers.begin(), headers.end());
  return response;
}

}  // namespace

std::string bookOrigin(const Origins& origins) {
  return "http://" + atPort(origins.bookSecret + ".localhost", origins.port);
}

std::string viewAddress(const Origins& origins) {
  return "http://" + atPort("127.0.0.1", origins.port) + '/' + origins.viewSecret + '/';
}

Site::Site(const Origins& origins, Handler view, Handler book)
    : _viewSecret(origins.viewSecret),
      _viewHosts{atPort("127.0.0.1", origins.port), atPort("[::1]", origins.port)},
      _bookHost(atPort(origins.bookSecret + ".localhost", origins.port)),
      _viewPolicy(policyOfView(bookOrigin(origins))),
      _bookPolicy(policyOfBook(bookOrigin(origins), origins.port, origins.allowNetwork)),
      _commonHeaders{{"Referrer-Policy", "no-referrer"},
                     {"X-Content-Type-Options", "nosniff"},
                     {"Cross-Origin-Opener-Policy", "same-origin"},
                     {"Cross-Origin-Resource-Policy", "same-origin"},
                     {"X-Frame-Options", "DENY"}},
      _bookHeaders{{"Referrer-Policy", "no-referrer"},
                   {"X-Content-Type-Options", "nosniff"},
                   {"Access-Control-Allow-Origin", "null"},
                   {"Cross-Origin-Resource-Policy", "cross-origin"},
                   {"X-DNS-Prefetch-Control", "off"}},
      _view(std::move(view)),
      _book(std::move(book)) {
  // The policy is silent on connections that are only opened ahead of a request.
  if (!origins.allowNetwork) _bookHeaders.emplace_back("Connection-Allowlist", "(response-origin)");
}

Response Site::answer(const Request& request) const {
  const bool isView = std::ranges::find(_viewHosts, request.host) != _viewHosts.end();
  const bool isBook = isSecret(request.host, _bookHost);
  if (!isView && !isBook) {
    return refused(page(421, "Wrong host", "No book is served under this name."));
  }
  if (request.method != "GET" && request.method != "HEAD") {
    Response response = page(405, "Not allowed", "A book can only be read.");
    response.headers.emplace_back("Allow", "GET, HEAD");
    return refused(std::move(response));
  }
  return isView ? answerOfView(request) : answerOfBook(request);
}

Response Site::refused(Response response) const {
  return finished(std::move(response), _commonHeaders, policyOfRefusals);
}

Response Site::answerOfView(const Request& request) const {
  // Before anything depends on the secret, so that other sites learn nothing of it.
  const bool foreign = isForeign(request);
  if (foreign && !isNavigation(request)) {
    return refused(page(403, "Refused", "Another site may not ask for this."));
  }
  const std::string_view path = request.path;
  const std::size_t size = _viewSecret.size();
  if (_viewSecret.empty() || path.size() < size + 2 || path.front() != '/' ||
      path[size + 1] != '/' || !isSecret(path.substr(1, size), _viewSecret)) {
    return refused(notFound());
  }
  Request behind = request;
  behind.path = path.substr(size + 2);
  // A bookmark, or a link in a letter, may lead to the page itself.
  if (foreign && !behind.path.empty()) return refused(notFound());
  return finished(_view(behind), _commonHeaders, _viewPolicy);
}

Response Site::answerOfBook(const Request& request) const {
  // In a tab of its own a page has no frame around it that keeps it from leaving.
  if (headerOrNothing(request, "sec-fetch-dest") == "document") {
    return finished(
        page(403, "A page of a book",
             "Open it in the view: there it can be searched, and it cannot lead elsewhere."),
        _bookHeaders, _bookPolicy);
  }
  return finished(_book(request), _bookHeaders, _bookPolicy);
}

}  // namespace quorvex::view
