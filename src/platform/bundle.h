#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/value.h"

// Bundle and system information: the record that an executable carries, the versions of the
// platform's libraries, the system's build.

namespace quorvex {

// Keys of an information record.
inline constexpr std::string_view informationShortVersionKey = "ShortVersion";
inline constexpr std::string_view informationVersionKey = "Version";

/// The path of the running program: its first argument, looked up in PATH when it has no slash;
/// null when that names no executable file. A relative path counts from the current folder.
std::optional<std::string> programPath(std::string_view firstArgument);

/// The information record of the ELF executable at `path`: the keyed document in its section
/// ".quorvex_info". Null when the file has none that can be read.
std::optional<Dictionary> informationRecord(const std::string& path);

/// The record of the running program, found through `firstArgument` or, failing that, through
/// /proc/self/exe.
std::optional<Dictionary> programInformation(std::string_view firstArgument);

/// The same through the process's own first argument.
std::optional<Dictionary> programInformation();

/// A library of the platform.
struct Bundle {
  std::string version;
  /// The folder of its resources; empty when it has none.
  std::string resourceFolder;
};

inline constexpr std::string_view substrateIdentifier = "com.corvane.Substrate";  ///< C library
inline constexpr std::string_view bedrockIdentifier = "com.corvane.Bedrock";      ///< ICU
inline constexpr std::string_view textSiftIdentifier = "com.corvane.TextSift";

/// Null for an identifier other than these three.
std::optional<Bundle> bundleWithIdentifier(std::string_view identifier);

/// The resource "name.type" of a bundle as a keyed document; null when it is not installed.
std::optional<Value> bundleResource(const Bundle& bundle, std::string_view name,
                                    std::string_view type);

/// The operating system's build: BUILD_ID of os-release, else VERSION_ID, else the kernel release.
std::optional<std::string> systemBuildVersion();

/// BUILD_ID, else VERSION_ID, of the text of an os-release file (os-release(5)).
std::optional<std::string> buildOfOsRelease(std::string_view text);

/// The leading decimal number of a version, clamped to 32 bits; 0 when there is none.
std::int32_t integerValue(std::string_view text);

}  // namespace quorvex
