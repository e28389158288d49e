#include "progress/progress_arguments.h"

#include <algorithm>
#include <array>

#include "common/format.h"
#include "progress/run_follower.h"

namespace quorvex {

namespace {

constexpr std::array<ProgressOption, 1> options = {{
    {"--help", "-h", "print the help", [](ProgressArguments& arguments) { arguments.help = true; }},
}};

}  // namespace

std::span<const ProgressOption> progressOptions() {
  return options;
}

Result<ProgressArguments> parseProgressArguments(std::span<char* const> arguments) {
  ProgressArguments parsed;
  bool optionsEnded = false;
  for (const std::string_view argument : arguments) {
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
    } else if (!optionsEnded && argument.starts_with('-')) {
      const auto* const option = std::ranges::find_if(options, [&](const ProgressOption& each) {
        return argument == each.name || argument == each.shortName;
      });
      if (option == options.end()) return Error{formatText("Unknown option: %@", {argument})};
      option->apply(parsed);
      if (parsed.help) return parsed;
    } else if (parsed.process) {
      return Error{"More than one process"};
    } else if (parsed.process = parseProcessId(argument); !parsed.process) {
      return Error{formatText("Not a process id: %@", {argument})};
    }
  }
  return parsed;
}

}  // namespace quorvex
