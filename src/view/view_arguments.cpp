#include "view/view_arguments.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "common/format.h"

namespace quorvex::view {

namespace {

/// Browsers leave the port of the web out of the name that they ask for.
constexpr std::uint16_t portOfWeb = 80;

bool setPort(ViewArguments& arguments, std::string_view value) {
  const char* const last = value.data() + value.size();
  const auto [end, error] = std::from_chars(value.data(), last, arguments.port);
  return error == std::errc() && end == last && arguments.port != 0 && arguments.port != portOfWeb;
}

constexpr std::array<ViewOption, 7> options = {{
    {"--book", "", true, "the operand is an index file; the pages are in this folder",
     [](ViewArguments& arguments, std::string_view value) {
       arguments.folder = value;
       return !value.empty();
     }},
    {"--no-browser", "", false, "print the address instead of opening it",
     [](ViewArguments& arguments, std::string_view) {
       arguments.opensBrowser = false;
       return true;
     }},
    {"--port", "", true, "serve on this port", setPort},
    {"--keep", "", false, "go on when no page has asked for an hour",
     [](ViewArguments& arguments, std::string_view) { return arguments.keep = true; }},
    {"--allow-network", "", false, "let the book's pages load from other hosts",
     [](ViewArguments& arguments, std::string_view) { return arguments.allowNetwork = true; }},
    {"--help", "-h", false, "print the help",
     [](ViewArguments& arguments, std::string_view) { return arguments.help = true; }},
    {"--version", "", false, "print the version",
     [](ViewArguments& arguments, std::string_view) { return arguments.version = true; }},
}};

const ViewOption* optionNamed(std::string_view name) {
  const auto* const found = std::ranges::find_if(options, [&](const ViewOption& option) {
    return name == option.name || (!option.shortName.empty() && name == option.shortName);
  });
  return found == options.end() ? nullptr : found;
}

/// "--name", "--name value", "--name=value". Takes the value off `rest`.
Status takeOption(std::string_view argument, std::span<char* const>& rest,
                  ViewArguments& arguments) {
  const std::size_t equals = argument.find('=');
  const std::string_view name = argument.substr(0, equals);
  const ViewOption* option = optionNamed(name);
  if (option == nullptr) return Error{formatText("Unknown option: %@", {argument})};
  std::string_view value;
  if (equals != argument.npos) {
    if (!option->takesValue) return Error{formatText("%@ takes no value", {name})};
    value = argument.substr(equals + 1);
  } else if (option->takesValue) {
    if (rest.empty()) return Error{formatText("%@ needs a value", {name})};
    value = rest.front();
    rest = rest.subspan(1);
  }
  if (option->apply(arguments, value)) return okStatus();
  return Error{formatText("Invalid value for %@: %@", {name, value})};
}

}  // namespace

std::span<const ViewOption> viewOptions() {
  return options;
}

Result<ViewArguments> parseViewArguments(std::span<char* const> words) {
  ViewArguments arguments;
  std::optional<std::string> operand;
  bool onlyOperands = false;
  while (!words.empty()) {
    const std::string_view word = words.front();
    words = words.subspan(1);
    if (!onlyOperands && word == "--") {
      onlyOperands = true;
    } else if (!onlyOperands && word.size() > 1 && word.front() == '-') {
      if (const Status taken = takeOption(word, words, arguments); !taken) return taken.error();
    } else if (operand) {
      return Error{formatText("Only one book can be opened: %@", {word})};
    } else {
      operand = word;
    }
  }
  if (arguments.help || arguments.version) return arguments;
  if (!operand || operand->empty()) return Error{"No book given"};
  if (arguments.folder.empty()) {
    arguments.folder = *std::move(operand);
  } else {
    arguments.indexFile = *std::move(operand);
  }
  return arguments;
}

}  // namespace quorvex::view
