#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "view/http/message.h"

namespace quorvex::view {

/// Tells versions of what an address names apart.
struct Version {
  std::string tag;  ///< a strong entity tag, with its quotes
  std::optional<std::time_t> modified;
};

enum class Precondition { met, notModified, failed };

/// What the conditions of a GET or HEAD request demand of a thing that is there (RFC 9110, 13.2.2).
Precondition precondition(const Request& request, const Version& version);

/// Whether a range of this version is of use to who asks (If-Range).
bool mayBeRange(const Request& request, const Version& version);

/// A date as headers have it (RFC 9110, 5.6.7).
std::string httpDate(std::time_t time);
/// Reads all three forms of dates.
std::optional<std::time_t> parsedHttpDate(const std::string& text);

}  // namespace quorvex::view
