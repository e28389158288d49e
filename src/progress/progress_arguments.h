#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <sys/types.h>

#include "common/result.h"

namespace quorvex {

/// The command line of quorvex-progress, checked.
struct ProgressArguments {
  bool help = false;
  std::optional<pid_t> process;
};

/// One option and what it does.
struct ProgressOption {
  std::string_view name;
  std::string_view shortName;
  std::string_view summary;  ///< a few words for a person
  void (*apply)(ProgressArguments& arguments);
};

/// Everything that lists the options is made from this table.
std::span<const ProgressOption> progressOptions();

/// What stands behind an option that asks for help is not read.
Result<ProgressArguments> parseProgressArguments(std::span<char* const> arguments);

}  // namespace quorvex
