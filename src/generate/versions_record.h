#pragma once

#include <optional>
#include <string>

#include "common/value.h"

namespace quorvex {

/// The versions that go into the record, each as its owner states it; null where it cannot be had.
struct SoftwareVersions {
  std::optional<std::string> program;
  std::optional<std::string> systemBuild;
  std::optional<std::string> substrate;
  std::optional<std::string> bedrock;
  std::optional<std::string> textSift;
  /// "SourceVersion" of the full-text library's version resource: a string or a number.
  std::optional<Value> textSiftSource;
};

/// Those of the running program and system.
SoftwareVersions currentSoftwareVersions();

/// The record of the software that made an index. Entries are put down in the order program, system
/// build, substrate, bedrock, full-text library; the first missing one ends the record.
Dictionary versionsDictionary(const SoftwareVersions& versions = currentSoftwareVersions());

}  // namespace quorvex
