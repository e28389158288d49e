#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/value.h"

// Bundle and system information: the record in an executable, the versions of the platform's
// libraries, the system's build.

namespace quorvex {

// Keys of an information record.
inline constexpr std::string_view informationShortVersionKey = "ShortVersion";
inline constexpr std::string_view informationVersionKey = "Version";

/// Returns the path of the running program: its first argument, looked up in PATH if it has no
/// slash; null if that names no executable file. May be relative to the current folder.
std::optional<std::string> programPath(std::string_view firstArgument);

/// Returns the information record of the ELF executable at `path`: the keyed document in its
/// section ".quorvex_info". Null if the file has no readable one.
std::optional<Dictionary> informationRecord(const std::string& path);

/// Returns the running program's record, found through `firstArgument` or, failing that, through
/// /proc/self/exe.
std::optional<Dictionary> programInformation(std::string_view firstArgument);

/// Likewise, with the process's own first argument.
std::optional<Dictionary> programInformation();

/// A library of the platform.
struct Bundle {
  std::string version;
  /// The resource folder; empty if there is none.
  std::string resourceFolder;
};

inline constexpr std::string_view substrateIdentifier = "com.corvane.Substrate";  ///< C library
inline constexpr std::string_view bedrockIdentifier = "com.corvane.Bedrock";      ///< ICU
inline constexpr std::string_view textSiftIdentifier = "com.corvane.TextSift";

/// Null for an identifier other than these three.
std::optional<Bundle> bundleWithIdentifier(std::string_view identifier);

/// Reads the resource "name.type" of a bundle, a keyed document; null if it is not installed.
std::optional<Value> bundleResource(const Bundle& bundle, std::string_view name,
                                    std::string_view type);

/// The operating system's build: BUILD_ID of os-release, else VERSION_ID, else the kernel release.
std::optional<std::string> systemBuildVersion();

/// BUILD_ID, else VERSION_ID, from the text of an os-release file (os-release(5)).
std::optional<std::string> buildOfOsRelease(std::string_view text);

/// The leading decimal number of a version, clamped to 32 bits; 0 if there is none.
std::int32_t integerValue(std::string_view text);

}  // namespace quorvex
