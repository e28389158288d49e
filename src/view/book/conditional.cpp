#include "view/book/conditional.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "common/unicode.h"

namespace quorvex::view {

namespace {

constexpr const char* preferredForm = "%a, %d %b %Y %H:%M:%S GMT";

/// Names of days and months are English whatever the user speaks.
::locale_t plainLocale() {
  static const ::locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

/// Whether a list of entity tags, or "*", names this strong one. A weak tag of the list equals it
/// only if that is enough.
bool namesTag(std::string_view list, std::string_view tag, bool weakIsEnough) {
  if (trimWhitespace(list) == "*") return true;
  while (!list.empty()) {
    list.remove_prefix(std::min(list.find_first_not_of(" \t,"), list.size()));
    const bool isWeak = list.starts_with("W/");
    if (isWeak) list.remove_prefix(2);
    const std::size_t end = list.starts_with('"') ? list.find('"', 1) : list.npos;
    if (end == list.npos) return false;  // not a list of tags
    if (list.substr(0, end + 1) == tag && (weakIsEnough || !isWeak)) return true;
    list.remove_prefix(end + 1);
  }
  return false;
}

/// Whether the thing was modified after a date in a header; null without a date.
std::optional<bool> isModifiedSince(const std::string* date, const Version& version) {
  if (date == nullptr || !version.modified) return std::nullopt;
  const std::optional<std::time_t> since = parsedHttpDate(*date);
  if (!since) return std::nullopt;
  return *version.modified > *since;
}

}  // namespace

Precondition precondition(const Request& request, const Version& version) {
  if (const std::string* tags = headerOf(request, "if-match")) {
    if (!namesTag(*tags, version.tag, false)) return Precondition::failed;
  } else if (isModifiedSince(headerOf(request, "if-unmodified-since"), version).value_or(false)) {
    return Precondition::failed;
  }
  if (const std::string* tags = headerOf(request, "if-none-match")) {
    return namesTag(*tags, version.tag, true) ? Precondition::notModified : Precondition::met;
  }
  const bool isNewer =
      isModifiedSince(headerOf(request, "if-modified-since"), version).value_or(true);
  return isNewer ? Precondition::met : Precondition::notModified;
}

bool mayBeRange(const Request& request, const Version& version) {
  const std::string* condition = headerOf(request, "if-range");
  if (condition == nullptr) return true;
  if (condition->starts_with('"')) return *condition == version.tag;
  return version.modified && parsedHttpDate(*condition) == version.modified;
}

std::string httpDate(std::time_t time) {
  std::tm parts{};
  std::array<char, 64> text{};
  if (::gmtime_r(&time, &parts) == nullptr) return {};
  return {text.data(),
          ::strftime_l(text.data(), text.size(), preferredForm, &parts, plainLocale())};
}

std::optional<std::time_t> parsedHttpDate(const std::string& text) {
  for (const char* form : {preferredForm, "%A, %d-%b-%y %H:%M:%S GMT", "%a %b %e %H:%M:%S %Y"}) {
    std::tm parts{};
    const char* end = ::strptime_l(text.c_str(), form, &parts, plainLocale());
    if (end != nullptr && *end == '\0') return ::timegm(&parts);
  }
  return std::nullopt;
}

}  // namespace quorvex::view
