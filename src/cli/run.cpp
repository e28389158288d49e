#include <csignal>

#include "cache/help_cache_manager.h"
#include "cli/create_driver.h"
#include "cli/entry_routine.h"
#include "cli/index_container.h"
#include "cli/listing.h"
#include "common/locale.h"
#include "platform/lowered_priority.h"

namespace quorvex {

int quorvexMain(std::span<char*> arguments) {
  // Somebody who stops reading what is printed ends the printing, not the making of an index.
  // NOLINTNEXTLINE(cert-err33-c): cannot fail for this signal
  std::signal(SIGPIPE, SIG_IGN);
  // A file that grows beyond the process's limit is a failed write, which cleans up after itself.
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

}  // namespace quorvex
