#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// One option of a command, as a shell sees it.
struct CompletedOption {
  std::string shortForm;  ///< with its hyphen; empty for none
  std::string longForm;   ///< with its hyphens; empty for none
  std::string_view summary;
  bool takesArgument = false;
  bool takesFiles = false;  ///< its argument may be a file
  std::string_view words;   ///< what its argument is taken from; empty when anything
  bool mayRepeat = false;
};

struct CompletedCommand {
  std::string_view name;
  std::vector<CompletedOption> options;
  enum class Operand { file, folder, process };  // the process of a run of quorvex
  Operand operand = Operand::file;               ///< what stands behind the options
  std::string_view operandName;
  std::string_view fileOption = "";  ///< with it the operand is a file; empty for none
};

/// The command of that name, with the options of the table that it parses its command line with.
std::optional<CompletedCommand> completedCommand(std::string_view name);

}  // namespace quorvex
