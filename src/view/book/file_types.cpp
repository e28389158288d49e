#include "view/book/file_types.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace quorvex::view {

namespace {

using Type = std::pair<std::string_view, std::string_view>;

/// Sorted by extension.
constexpr auto types = std::to_array<Type>({
    {"aac", "audio/aac"},
    {"apng", "image/apng"},
    {"avif", "image/avif"},
    {"bmp", "image/bmp"},
    {"css", "text/css"},
    {"csv", "text/csv"},
    {"eot", "application/vnd.ms-fontobject"},
    {"flac", "audio/flac"},
    {"gif", "image/gif"},
    {"htm", "text/html"},
    {"html", "text/html"},
    {"ico", "image/vnd.microsoft.icon"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"js", "text/javascript"},
    {"json", "application/json"},
    {"m4a", "audio/mp4"},
    {"m4v", "video/mp4"},
    {"map", "application/json"},
    {"mjs", "text/javascript"},
    {"mml", "application/mathml+xml"},
    {"mp3", "audio/mpeg"},
    {"mp4", "video/mp4"},
    {"oga", "audio/ogg"},
    {"ogg", "audio/ogg"},
    {"ogv", "video/ogg"},
    {"opus", "audio/ogg"},
    {"otf", "font/otf"},
    {"pdf", "application/pdf"},
    {"png", "image/png"},
    {"svg", "image/svg+xml"},
    {"ttc", "font/collection"},
    {"ttf", "font/ttf"},
    {"txt", "text/plain"},
    {"vtt", "text/vtt"},
    {"wasm", "application/wasm"},
    {"wav", "audio/wav"},
    {"webm", "video/webm"},
    {"webmanifest", "application/manifest+json"},
    {"webp", "image/webp"},
    {"woff", "font/woff"},
    {"woff2", "font/woff2"},
    {"xht", "application/xhtml+xml"},
    {"xhtml", "application/xhtml+xml"},
    {"xml", "application/xml"},
    {"xsl", "application/xml"},
});
static_assert(std::ranges::is_sorted(types));

std::string extensionOf(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  std::string extension(dot == name.npos ? "" : name.substr(dot + 1));
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension;
}

}  // namespace

bool isHtml(std::string_view path) {
  return mediaType(path) == "text/html";
}

std::string_view mediaType(std::string_view path) {
  const std::string extension = extensionOf(path);
  const auto* const found = std::ranges::lower_bound(types, extension, {}, &Type::first);
  return found != types.end() && found->first == extension ? found->second : std::string_view();
}

}  // namespace quorvex::view
