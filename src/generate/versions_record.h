#pragma once

#include <optional>
#include <string>

#include "common/value.h"

namespace quorvex {

/// The versions for the record, as their owners report them; null if unavailable.
struct SoftwareVersions {
  std::optional<std::string> program;
  std::optional<std::string> systemBuild;
  std::optional<std::string> substrate;
  std::optional<std::string> bedrock;
  std::optional<std::string> textSift;
  /// "SourceVersion" of the full-text library's version resource: a string or a number.
  std::optional<Value> textSiftSource;
};

/// Returns those of the running program and system.
SoftwareVersions currentSoftwareVersions();

/// Records the software that made an index. Without a system build only the program is recorded;
/// otherwise a missing full-text library is left out and other missing versions are 0.
Dictionary versionsDictionary(const SoftwareVersions& versions = currentSoftwareVersions());

}  // namespace quorvex
