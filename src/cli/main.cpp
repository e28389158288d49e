#include <csignal>
#include <cstddef>
#include <new>

#include <sysexits.h>
#include <unistd.h>

#include "cache/help_cache_manager.h"
#include "cli/create_driver.h"
#include "cli/entry_routine.h"
#include "cli/index_container.h"
#include "cli/listing.h"
#include "common/locale.h"
#include "common/output.h"
#include "platform/lowered_priority.h"
#include "platform/program_allocator.h"

namespace quorvex {

namespace {

int run(std::span<char*> arguments) {
  // When the reader of the output goes away, printing ends, but an index is still made.
  // NOLINTNEXTLINE(cert-err33-c): cannot fail for this signal
  std::signal(SIGPIPE, SIG_IGN);
  // Exceeding the limit on file sizes becomes a failed write, which cleans up after itself.
  // NOLINTNEXTLINE(cert-err33-c): cannot fail for this signal
  std::signal(SIGXFSZ, SIG_IGN);
  unsetEmptyLocaleVariables();
  const Collaborators collaborators{
      .lowerPriority = lowerProcessPriority,
      .purgeCaches = [] { QXHelpCacheManager().shutdownAndClear(); },
      .create = runCreate,
      .readIndexFile = readIndexFileForListing,
      .list = listIndex,
  };
  return runCommandLine(parseCommandLine(arguments, collaborators.lowerPriority), collaborators);
}

/// For what happens before the mode is known; the entry routine handles the rest.
int noMemory() {
  writeFully(STDERR_FILENO, "Not enough memory\n");
  return EX_OSERR;
}

}  // namespace

}  // namespace quorvex

int main(int argc, char** argv) try {
  if (!quorvex::setUpProgramAllocator()) return quorvex::noMemory();
  return quorvex::run({argv, static_cast<std::size_t>(argc)});
} catch (const std::bad_alloc&) {
  return quorvex::noMemory();
}
