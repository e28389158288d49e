#include "cli/entry_routine.h"

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

#include "cli/program_version.h"
#include "common/files.h"
#include "common/format.h"
#include "common/output.h"

namespace quorvex {

namespace {

enum ExitStatus : int {
  success = 0,
  badUsage = 1,
  helpNeeded = 2,
  cannotOpen = 3,
  unreadableIndex = 4,
  noMode = 5,
  notADirectory = 6,
};

void writeMessage(std::string_view text) {
  writeFully(STDERR_FILENO, text);
}

int provisionalStatus(const Options& options) {
  if (options.badOption) return badUsage;
  const bool lists = options.listMode != ListMode::none;
  return options.create != lists ? success : noMode;
}

/// Prints the message for a status, if any, and returns the status.
int finish(int status, const CommandLine& commandLine) {
  const std::vector<std::string>& arguments = commandLine.arguments;
  switch (status) {
    case badUsage:
    case helpNeeded:
      writeMessage(usage(commandLine.programName));
      break;
    case cannotOpen:
      writeMessage(formatText("Cannot open file: %s\n",
                              {arguments.empty() ? nullText : std::string_view(arguments[0])}));
      break;
    case unreadableIndex:
      writeMessage("There was a problem unarchiving the index file.\n");
      break;
    case noMode:
      writeMessage("Please choose a mode. (You probably want to create an index using -C.)\n");
      break;
    default:
      break;
  }
  return status;
}

int runCreateMode(int status, const CommandLine& commandLine, const Collaborators& collaborators) {
  if (commandLine.arguments.size() != 1) {
    return finish(status == success ? int{helpNeeded} : status, commandLine);
  }
  if (status != success) return finish(status, commandLine);
  const std::string& argument = commandLine.arguments.front();
  std::error_code error;
  const std::filesystem::path directory = std::filesystem::canonical(expandTilde(argument), error);
  if (error || !std::filesystem::is_directory(directory, error)) {
    writeMessage(formatText("Not a directory: %s\n", {argument}));
    return notADirectory;
  }
  collaborators.create(commandLine.options, directory.string());
  return success;
}

int runListMode(int status, const CommandLine& commandLine, const Collaborators& collaborators) {
  const Options& options = commandLine.options;
  if (options.listMode != ListMode::none && !options.indexFilePath && status == success) {
    status = helpNeeded;
  }
  if (status != success || !options.indexFilePath) return finish(status, commandLine);
  const std::optional<Dictionary> index = collaborators.readIndexFile(*options.indexFilePath);
  if (!index) return finish(unreadableIndex, commandLine);
  if (options.indexFormat == IndexFormat::none) {
    writeMessage("Index format no longer supported.\n");
  } else if (const Status listed =
                 collaborators.list(*index, options.listMode, options.verbose, options.indexFormat);
             !listed) {
    writeMessage(listed.error().description + '\n');
  }
  return success;
}

}  // namespace

int runCommandLine(const CommandLine& commandLine, const Collaborators& collaborators) try {
  const Options& options = commandLine.options;
  const int status = provisionalStatus(options);
  if (options.purgeCaches) {
    collaborators.purgeCaches();
    return status;
  }
  if (options.printVersion) {
    writeMessage(versionLine(commandLine.programName));
    return status;
  }
  // Requested help overrides every other status.
  const int known = options.help ? int{helpNeeded} : status;
  if (options.create || options.appendRDXOnly) {
    return runCreateMode(known, commandLine, collaborators);
  }
  return runListMode(known, commandLine, collaborators);
} catch (const std::bad_alloc&) {
  // Create mode ends with success even if no index results; the earlier file is untouched.
  writeMessage("Not enough memory\n");
  return commandLine.options.create ? success : unreadableIndex;
} catch (const std::length_error& error) {  // a text that a library cannot take
  writeMessage(error.what() + std::string("\n"));
  return commandLine.options.create ? success : unreadableIndex;
}

}  // namespace quorvex
