#include "command.h"

#include <cstring>

#include "cli/option_parser.h"
#include "progress/progress_arguments.h"
#include "search/search_arguments.h"
#include "view/view_arguments.h"

namespace quorvex {

namespace {

constexpr std::string_view formats = "lsm beacon";
constexpr std::string_view lengths = "2 3";
constexpr std::string_view languages = "en es de fr sv hu it";

/// Whether the short form carries the argument that the long form takes.
bool shortFormAgrees(const OptionDescription& option) {
  const char* place = std::strchr(shortOptions, option.letter);
  return place != nullptr && (place[1] == ':') == option.takesArgument;
}

std::string_view wordsOf(char letter) {
  switch (letter) {
    case 'I':
      return formats;
    case 'm':
      return lengths;
    case 'l':
    case 's':
      return languages;
    default:
      return {};
  }
}

CompletedCommand indexCommand() {
  CompletedCommand command{.name = "quorvex",
                           .options = {},
                           .operand = CompletedCommand::Operand::folder,
                           .operandName = "help book"};
  for (const OptionDescription& option : optionDescriptions()) {
    // Options that the program refuses are in its table, and are not offered.
    if (option.summary == "rejected") continue;
    command.options.push_back(
        {.shortForm = shortFormAgrees(option) ? std::string("-") + option.letter : "",
         .longForm = std::string("--") + option.longName,
         .summary = option.summary,
         .takesArgument = option.takesArgument,
         .takesFiles = std::strchr("fxs", option.letter) != nullptr,
         .words = wordsOf(option.letter),
         .mayRepeat = std::strchr("vei", option.letter) != nullptr});
  }
  command.options.push_back(
      {.shortForm = "-1", .longForm = "", .summary = "parse one page at a time", .words = ""});
  return command;
}

CompletedCommand searchCommand() {
  CompletedCommand command{.name = "quorvex-search",
                           .options = {},
                           .operand = CompletedCommand::Operand::file,
                           .operandName = "index file"};
  for (const SearchOption& option : searchOptions()) {
    command.options.push_back(
        {.shortForm = std::string(option.shortName),
         .longForm = std::string(option.name),
         .summary = option.summary,
         .takesArgument = option.takes == SearchOption::Takes::value,
         .takesFiles = option.name == "--book" || option.name == "--index",
         .words = option.name == "--language" ? languages : std::string_view()});
  }
  return command;
}

CompletedCommand viewCommand() {
  CompletedCommand command{.name = "quorvex-view",
                           .options = {},
                           .operand = CompletedCommand::Operand::folder,
                           .operandName = "help book",
                           .fileOption = "--book"};
  for (const view::ViewOption& option : view::viewOptions()) {
    command.options.push_back({.shortForm = std::string(option.shortName),
                               .longForm = std::string(option.name),
                               .summary = option.summary,
                               .takesArgument = option.takesValue,
                               .takesFiles = option.name == "--book",
                               .words = ""});
  }
  return command;
}

CompletedCommand progressCommand() {
  CompletedCommand command{.name = "quorvex-progress",
                           .options = {},
                           .operand = CompletedCommand::Operand::process,
                           .operandName = "run of quorvex"};
  for (const ProgressOption& option : progressOptions()) {
    command.options.push_back({.shortForm = std::string(option.shortName),
                               .longForm = std::string(option.name),
                               .summary = option.summary,
                               .words = ""});
  }
  return command;
}

}  // namespace

std::optional<CompletedCommand> completedCommand(std::string_view name) {
  if (name == "quorvex") return indexCommand();
  if (name == "quorvex-search") return searchCommand();
  if (name == "quorvex-view") return viewCommand();
  if (name == "quorvex-progress") return progressCommand();
  return std::nullopt;
}

}  // namespace quorvex
