// Writes the completions of a command for one shell to standard output, made from the table that
// the command parses its options with, so that the two cannot drift apart.

#include <iostream>
#include <string>
#include <string_view>

#include "command.h"

namespace {

using quorvex::CompletedCommand;
using quorvex::CompletedOption;
using Operand = CompletedCommand::Operand;

/// Prints the processes of the runs that can be followed.
constexpr std::string_view runs = "$(pgrep -x quorvex 2>/dev/null)";

/// A summary between apostrophes, as every shell of ours reads it.
std::string quoted(std::string_view summary) {
  std::string text;
  for (const char character : summary) {
    if (character == '\'') {
      text += "'\\''";
    } else {
      text += character;
    }
  }
  return text;
}

/// Both forms of the option, or the one it has, with `between` them.
std::string formsOf(const CompletedOption& option, std::string_view between) {
  std::string forms = option.shortForm;
  if (!option.shortForm.empty() && !option.longForm.empty()) forms += between;
  return forms + option.longForm;
}

void writeBashArgument(const CompletedOption& option) {
  std::cout << "    " << formsOf(option, " | ") << ")\n";
  if (option.takesFiles) {
    std::cout << "      compopt -o filenames\n"
                 "      mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n";
  }
  if (!option.words.empty()) {
    std::cout << "      COMPREPLY+=($(compgen -W '" << option.words << "' -- \"$current\"))\n";
  }
  std::cout << "      return\n      ;;\n";
}

void writeBashOperand(const CompletedCommand& command) {
  if (command.operand == Operand::process) {
    std::cout << "    COMPREPLY=($(compgen -W \"" << runs << "\" -- \"$current\"))\n";
    return;
  }
  std::cout << "    local kind=" << (command.operand == Operand::folder ? "-d" : "-f") << '\n';
  if (!command.fileOption.empty()) {
    std::cout << "    if [[ ${COMP_WORDS[*]} == *' " << command.fileOption
              << "'* ]]; then kind=-f; fi\n";
  }
  std::cout << "    compopt -o filenames\n"
               "    mapfile -t COMPREPLY < <(compgen $kind -- \"$current\")\n";
}

void writeBash(const CompletedCommand& command) {
  std::string words;
  std::cout << "# bash completion for " << command.name << ", made from its option table\n\n_"
            << command.name
            << "() {\n"
               "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
               "  # bash cuts a long option and its value at the equals sign.\n"
               "  if [[ $current == = ]]; then\n"
               "    current=\n"
               "  elif [[ $previous == = ]]; then\n"
               "    previous=${COMP_WORDS[COMP_CWORD - 2]}\n"
               "  fi\n"
               "  COMPREPLY=()\n"
               "  case $previous in\n";
  for (const CompletedOption& option : command.options) {
    words += (words.empty() ? "" : " ") + formsOf(option, " ");
    if (option.takesArgument) writeBashArgument(option);
  }
  std::cout << "  esac\n"
               "  if [[ $current == -* ]]; then\n"
               "    COMPREPLY=($(compgen -W '"
            << words
            << "' -- \"$current\"))\n"
               "  else\n";
  writeBashOperand(command);
  std::cout << "  fi\n"
               "}\ncomplete -F _"
            << command.name << ' ' << command.name << '\n';
}

void writeZsh(const CompletedCommand& command) {
  std::cout << "#compdef " << command.name << "\n# zsh completion for " << command.name
            << ", made from its option table\n\n_arguments -s -S : \\\n";
  for (const CompletedOption& option : command.options) {
    const std::string longForm =
        option.longForm + (option.takesArgument && !option.longForm.empty() ? "=" : "");
    std::cout << "  ";
    if (!option.shortForm.empty() && !option.longForm.empty()) {
      std::cout << (option.mayRepeat ? "\\*" : "'(" + formsOf(option, " ") + ")'") << '{'
                << option.shortForm << (option.takesArgument ? "+" : "") << ',' << longForm << "}'";
    } else {
      std::cout << '\'' << option.shortForm << longForm;
    }
    std::cout << '[' << quoted(option.summary) << ']';
    if (option.takesArgument) {
      std::cout << ':' << option.longForm.substr(2) << ':';
      if (option.takesFiles && !option.words.empty()) {
        std::cout << "{_files; compadd " << option.words << '}';
      } else if (option.takesFiles) {
        std::cout << "_files";
      } else if (!option.words.empty()) {
        std::cout << '(' << option.words << ')';
      }
    }
    std::cout << "' \\\n";
  }
  std::cout << "  '1:" << command.operandName << ':';
  if (command.operand == Operand::process) {
    std::cout << "{compadd " << runs << '}';
  } else {
    std::cout << "_files" << (command.operand == Operand::folder ? " -/" : "");
  }
  std::cout << "'\n";
}

void writeFish(const CompletedCommand& command) {
  const std::string start = "complete -c " + std::string(command.name);
  std::cout << "# fish completion for " << command.name << ", made from its option table\n\n";
  if (command.operand == Operand::folder) {
    std::cout << start << " -f -a '(__fish_complete_directories)'\n";
    if (!command.fileOption.empty()) {
      std::cout << start << " -n 'string match -q \"* " << command.fileOption
                << "*\" -- (commandline)' -F\n";
    }
  } else if (command.operand == Operand::process) {
    std::cout << start << " -f -a '" << runs.substr(1) << "'\n";
  }
  for (const CompletedOption& option : command.options) {
    std::cout << start;
    if (!option.shortForm.empty()) std::cout << " -s " << option.shortForm.substr(1);
    if (!option.longForm.empty()) std::cout << " -l " << option.longForm.substr(2);
    if (option.takesArgument) std::cout << (option.takesFiles ? " -r -F" : " -x");
    if (!option.words.empty()) std::cout << " -a '" << option.words << '\'';
    std::cout << " -d '" << quoted(option.summary) << "'\n";
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view shell = argumentCount == 3 ? arguments[1] : "";
  const auto command = quorvex::completedCommand(argumentCount == 3 ? arguments[2] : "");
  if (command && shell == "bash") {
    writeBash(*command);
  } else if (command && shell == "zsh") {
    writeZsh(*command);
  } else if (command && shell == "fish") {
    writeFish(*command);
  } else {
    std::cerr << "usage: generate_completions bash|zsh|fish COMMAND\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
