#include "platform/bundle.h"

#include <array>

#include <gnu/libc-version.h>
#include <unicode/uversion.h>

#include "common/files.h"
#include "common/keyed_document.h"
#include "platform/textsift.h"

namespace quorvex {

namespace {

/// Where the full-text library's resources are installed.
constexpr std::string_view textSiftResources = "/usr/share/quorvex/TextSift";

std::string icuVersion() {
  UVersionInfo numbers{};
  ::u_getVersion(numbers);
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  ::u_versionToString(numbers, text.data());
  return text.data();
}

}  // namespace

std::optional<Bundle> bundleWithIdentifier(std::string_view identifier) {
  if (identifier == substrateIdentifier) return Bundle{::gnu_get_libc_version(), {}};
  if (identifier == bedrockIdentifier) return Bundle{icuVersion(), {}};
  if (identifier == textSiftIdentifier) {
    return Bundle{std::string(textSiftVersion), std::string(textSiftResources)};
  }
  return std::nullopt;
}

std::optional<Value> bundleResource(const Bundle& bundle, std::string_view name,
                                    std::string_view type) {
  if (bundle.resourceFolder.empty()) return std::nullopt;
  std::string file(name);
  file.append(".").append(type);
  Result<Value> resource = readKeyedDocument(appendPathComponent(bundle.resourceFolder, file));
  if (!resource) return std::nullopt;
  return std::move(resource).value();
}

}  // namespace quorvex
