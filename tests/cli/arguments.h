#pragma once

#include <string>
#include <vector>

#include "cli/option_parser.h"

namespace quorvex::test {

/// Parses the words as the arguments of a program called "quorvex".
inline CommandLine parse(std::vector<std::string> words, bool priorityCanBeLowered = true) {
  words.insert(words.begin(), "quorvex");
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  return parseCommandLine(std::span(arguments).first(words.size()),
                          [priorityCanBeLowered] { return priorityCanBeLowered; });
}

}  // namespace quorvex::test
