// Passes arguments, one per line, through parsing and the mode decision. Nothing is executed: the
// collaborators only count calls. No file is named that could take long to read.

#include <vector>

#include "cli/entry_routine.h"
#include "fuzz/driver.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string text(fuzz::view(bytes, size));
  std::vector<std::string> words{"quorvex"};
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);

  int calls = 0;
  const Collaborators collaborators{
      .lowerPriority = [] { return false; },
      .purgeCaches = [&] { ++calls; },
      .create = [&](const Options&, const std::string&) { ++calls; },
      .readIndexFile =
          [](const std::string& path) {
            fuzz::require(path.starts_with('/'));
            return std::optional(Dictionary());
          },
      .list =
          [&](const Dictionary&, ListMode, bool, IndexFormat) {
            ++calls;
            return okStatus();
          },
  };
  const CommandLine commandLine =
      parseCommandLine({arguments.data(), words.size()}, collaborators.lowerPriority);
  const int status = runCommandLine(commandLine, collaborators);
  fuzz::require(status >= 0 && status <= 6 && status != 3 && calls <= 1);
  return 0;
}
