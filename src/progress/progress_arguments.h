#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <sys/types.h>

#include "common/result.h"

namespace quorvex {

/// The validated command line of quorvex-progress.
struct ProgressArguments {
  bool help = false;
  std::optional<pid_t> process;
};

/// An option and its effect.
struct ProgressOption {
  std::string_view name;
  std::string_view shortName;
  std::string_view summary;  ///< short and human-readable
  void (*apply)(ProgressArguments& arguments);
};

/// All option lists are generated from this table.
std::span<const ProgressOption> progressOptions();

/// Ignores everything after a help option.
Result<ProgressArguments> parseProgressArguments(std::span<char* const> arguments);

}  // namespace quorvex
