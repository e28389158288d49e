// Writes the completions of one shell to standard output, made from the table that the program
// parses its command line with, so that the two cannot drift apart.

#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

#include "cli/option_parser.h"

namespace {

using quorvex::OptionDescription;

/// What can stand behind an option.
enum class Argument { none, indexFile, file, format, length, locale, stopWords, text };

Argument argumentOf(const OptionDescription& option) {
  if (!option.takesArgument) return Argument::none;
  switch (option.letter) {
    case 'f':
      return Argument::indexFile;
    case 'x':
      return Argument::file;
    case 'I':
      return Argument::format;
    case 'm':
      return Argument::length;
    case 'l':
      return Argument::locale;
    case 's':
      return Argument::stopWords;
    default:
      return Argument::text;
  }
}

constexpr std::string_view formats = "lsm beacon";
constexpr std::string_view lengths = "2 3";
constexpr std::string_view languages = "en es de fr sv hu it";

/// The words that an argument is taken from; empty when there is no such list.
std::string_view wordsOf(Argument argument) {
  switch (argument) {
    case Argument::format:
      return formats;
    case Argument::length:
      return lengths;
    case Argument::locale:
    case Argument::stopWords:
      return languages;
    default:
      return {};
  }
}

bool takesFiles(Argument argument) {
  return argument == Argument::indexFile || argument == Argument::file ||
         argument == Argument::stopWords;
}

/// Options that the program refuses are in its table, and are not offered.
bool isOffered(const OptionDescription& option) {
  return option.summary != "rejected";
}

/// Whether the short form carries the argument that the long form takes.
bool shortFormAgrees(const OptionDescription& option) {
  const char* place = std::strchr(quorvex::shortOptions, option.letter);
  return place != nullptr && (place[1] == ':') == option.takesArgument;
}

bool mayRepeat(const OptionDescription& option) {
  return option.letter == 'v' || option.letter == 'e' || option.letter == 'i';
}

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

void writeBash() {
  std::string words = "-1";
  std::cout << "# bash completion for quorvex, made from the program's option table\n\n"
               "_quorvex() {\n"
               "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
               "  # bash cuts a long option and its value at the equals sign.\n"
               "  if [[ $current == = ]]; then\n"
               "    current=\n"
               "  elif [[ $previous == = ]]; then\n"
               "    previous=${COMP_WORDS[COMP_CWORD - 2]}\n"
               "  fi\n"
               "  COMPREPLY=()\n"
               "  case $previous in\n";
  for (const OptionDescription& option : quorvex::optionDescriptions()) {
    if (!isOffered(option)) continue;
    const std::string letter = std::string("-") + option.letter;
    const std::string name = std::string("--") + option.longName;
    const bool agrees = shortFormAgrees(option);
    words += (agrees ? ' ' + letter : "") + ' ' + name;
    const Argument argument = argumentOf(option);
    if (argument == Argument::none) continue;
    std::cout << "    " << (agrees ? letter + " | " : "") << name << ")\n";
    if (takesFiles(argument)) {
      std::cout << "      compopt -o filenames\n"
                   "      mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n";
    }
    if (const std::string_view list = wordsOf(argument); !list.empty()) {
      std::cout << "      COMPREPLY+=($(compgen -W '" << list << "' -- \"$current\"))\n";
    }
    std::cout << "      return\n      ;;\n";
  }
  std::cout << "  esac\n"
               "  if [[ $current == -* ]]; then\n"
               "    COMPREPLY=($(compgen -W '"
            << words
            << "' -- \"$current\"))\n"
               "  else\n"
               "    compopt -o filenames\n"
               "    mapfile -t COMPREPLY < <(compgen -d -- \"$current\")\n"
               "  fi\n"
               "}\n"
               "complete -F _quorvex quorvex\n";
}

void writeZsh() {
  std::cout << "#compdef quorvex\n"
               "# zsh completion for quorvex, made from the program's option table\n\n"
               "_arguments -s -S : \\\n";
  for (const OptionDescription& option : quorvex::optionDescriptions()) {
    if (!isOffered(option)) continue;
    const Argument argument = argumentOf(option);
    const std::string longForm =
        std::string("--") + option.longName + (argument == Argument::none ? "" : "=");
    const std::string letter = std::string("-") + option.letter;
    std::cout << "  ";
    if (shortFormAgrees(option)) {
      std::cout << (mayRepeat(option) ? "\\*" : "'(" + letter + " --" + option.longName + ")'")
                << '{' << letter << (argument == Argument::none ? "" : "+") << ',' << longForm
                << "}'";
    } else {
      std::cout << '\'' << longForm;
    }
    std::cout << '[' << quoted(option.summary) << ']';
    if (argument != Argument::none) {
      std::cout << ':' << option.longName << ':';
      const std::string_view list = wordsOf(argument);
      if (takesFiles(argument) && !list.empty()) {
        std::cout << "{_files; compadd " << list << '}';
      } else if (takesFiles(argument)) {
        std::cout << "_files";
      } else if (!list.empty()) {
        std::cout << '(' << list << ')';
      }
    }
    std::cout << "' \\\n";
  }
  std::cout << "  '-1[parse one page at a time]' \\\n"
               "  '1:help book:_files -/'\n";
}

void writeFish() {
  std::cout << "# fish completion for quorvex, made from the program's option table\n\n"
               "complete -c quorvex -f -a '(__fish_complete_directories)'\n"
               "complete -c quorvex -s 1 -d 'parse one page at a time'\n";
  for (const OptionDescription& option : quorvex::optionDescriptions()) {
    if (!isOffered(option)) continue;
    const Argument argument = argumentOf(option);
    std::cout << "complete -c quorvex";
    if (shortFormAgrees(option)) std::cout << " -s " << option.letter;
    std::cout << " -l " << option.longName;
    if (argument != Argument::none) std::cout << (takesFiles(argument) ? " -r -F" : " -x");
    if (const std::string_view list = wordsOf(argument); !list.empty()) {
      std::cout << " -a '" << list << '\'';
    }
    std::cout << " -d '" << quoted(option.summary) << "'\n";
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view shell = argumentCount == 2 ? arguments[1] : "";
  if (shell == "bash") {
    writeBash();
  } else if (shell == "zsh") {
    writeZsh();
  } else if (shell == "fish") {
    writeFish();
  } else {
    std::cerr << "usage: generate_completions bash|zsh|fish\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
