#include "view/index/book_language.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "common/files.h"
#include "common/value.h"
#include "extract/html_parser.h"

namespace quorvex::view {

namespace {

constexpr std::size_t mostPages = 20;
/// The root element stands near the top, unless a licence stands above it.
constexpr std::size_t bytesOfTop = 16'384;

Data topOf(const std::string& path) {
  std::string top;
  const auto take = [&](std::string_view piece) {
    top += piece.substr(0, bytesOfTop - top.size());
    return top.size() < bytesOfTop;
  };
  // A page that cannot be read states nothing.
  static_cast<void>(readFileInPieces(path, UINT64_MAX, take));
  return Data(std::move(top));
}

/// "en" for "en_US", so that it counts together with "en_GB"; null if the language is unknown.
std::optional<Locale> languageAlone(const Locale& locale) {
  return locale.hasKnownLanguage() ? Locale::withIdentifier(locale.language()) : std::nullopt;
}

std::optional<Locale> statedLanguage(const std::string& path) {
  const std::optional<Array> found = QXHTMLParser::objectsForXPath(
      "/html/@*[name()='lang' or name()='xml:lang']", topOf(path), path);
  if (!found || found->empty()) return std::nullopt;
  const Dictionary* attribute = found->front().dictionary();
  const Value* text = attribute != nullptr ? find(*attribute, "nodeText") : nullptr;
  const std::string* tag = text != nullptr ? text->string() : nullptr;
  if (tag == nullptr || !isLanguageTag(*tag)) return std::nullopt;
  const std::optional<Locale> stated = Locale::withIdentifier(*tag);
  return stated ? languageAlone(*stated) : std::nullopt;
}

}  // namespace

Locale languageOfBook(const std::string& folder, const std::vector<std::string>& subpaths,
                      const Locale& userLocale) {
  std::map<std::string, std::size_t> counts;
  const std::size_t pages = std::min(subpaths.size(), mostPages);
  for (std::size_t i = 0; i < pages; ++i) {
    const std::string& subpath = subpaths[i * subpaths.size() / pages];
    const auto stated = statedLanguage(appendPathComponent(folder, subpath));
    if (stated) ++counts[stated->identifier()];
  }
  const std::string users = userLocale.language();
  const auto rank = [&](const auto& count) {
    return std::pair(count.second, count.first == users);
  };
  const auto most = std::ranges::max_element(counts, {}, rank);
  const std::optional<Locale> language =
      most == counts.end() ? languageAlone(userLocale) : Locale::withIdentifier(most->first);
  return language.value_or(userLocale);
}

}  // namespace quorvex::view
