#include "view/view_program.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "common/files.h"
#include "common/locale.h"
#include "common/output.h"
#include "common/private_folder.h"
#include "common/url.h"
#include "quorvex/help_index.h"
#include "search/browser.h"
#include "search/hit_text.h"
#include "view/book/book_folder.h"
#include "view/book/book_site.h"
#include "view/http/server.h"
#include "view/index/index_keeper.h"
#include "view/kept_state.h"
#include "view/memory.h"
#include "view/page/page_maker.h"
#include "view/secret.h"
#include "view/site.h"
#include "view/view_arguments.h"
#include "view/view_site.h"

namespace quorvex::view {

namespace {

using std::chrono::steady_clock;

constexpr auto longestUnasked = std::chrono::hours(1);
constexpr auto longestIdle = std::chrono::seconds(30);

constexpr std::string_view usage =
    "Usage: quorvex-view [options] FOLDER\n"
    "       quorvex-view [options] --book FOLDER INDEX\n"
    "Opens a help book in the browser, to be read and searched.\n"
    "\n"
    "  FOLDER              folder of the book's HTML pages; their index is made when\n"
    "                      it is missing or the pages have changed\n"
    "      --book FOLDER   use the index file INDEX for the pages in FOLDER\n"
    "      --no-browser    print the address instead of opening it\n"
    "      --port N        serve on port N of this computer\n"
    "      --keep          go on when no page has asked for an hour\n"
    "      --allow-network let the book's pages load from other hosts\n"
    "  -h, --help          print this help and exit\n"
    "      --version       print the version and exit\n"
    "\n"
    "Only this user's browser gets in, by an address that nobody can guess. Ctrl-C\n"
    "ends the program.\n"
    "Exit status: 0 ended, 2 usage error, 3 unreadable book or index, 4 cannot serve\n"
    "or print.\n";

int status(ViewStatus status) {
  return static_cast<int>(status);
}

/// Prints safely, as messages quote the user.
void complain(std::string_view message) {
  writeFully(STDERR_FILENO, "quorvex-view: " + printable(message) + "\n");
}

int fail(ViewStatus outcome, const std::string& message) {
  complain(message);
  return status(outcome);
}

int print(std::string_view text) {
  if (writeFully(STDOUT_FILENO, text)) return status(ViewStatus::ended);
  return fail(ViewStatus::cannotServe, standardOutputError(errno).description);
}

/// Without those that whoever started the program wants ignored (nohup).
sigset_t endingSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) ::sigaddset(&signals, signal);
  }
  return signals;
}

/// Another signal then ends the program at once.
void unblockEndingSignals() {
  const sigset_t signals = endingSignals();
  ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

/// Shows an address to the user: prints it, or opens it in the browser, which may take as long as
/// the browser runs.
class Opener {
 public:
  Opener(const KeptState* state, bool opensBrowser) : _state(state), _opensBrowser(opensBrowser) {}
  ~Opener() {
    // A browser that runs in its command's place would keep us from ending.
    if (_thread.joinable()) _thread.detach();
  }
  Opener(const Opener&) = delete;
  Opener& operator=(const Opener&) = delete;

  bool show(const std::string& address) {
    if (!_opensBrowser || _state == nullptr) return writeFully(STDOUT_FILENO, address + '\n');
    // A browser that may not read the user's hidden folders opens nothing, and does not tell.
    if (::isatty(STDOUT_FILENO) == 1) writeFully(STDOUT_FILENO, address + '\n');
    const Result<std::string> door = _state->writeDoor(address);
    if (!door) {
      complain(door.error().description);
      return writeFully(STDOUT_FILENO, address + '\n');
    }
    const auto open = [address, url = "file://" + percentEncodePath(*door)] {
      const Status opened = openInBrowser(url, BrowserRuns::apart);
      if (opened) return;
      complain(opened.error().description);
      writeFully(STDOUT_FILENO, address + '\n');
    };
    try {
      _thread = std::thread(open);
    } catch (const std::system_error&) {
      return writeFully(STDOUT_FILENO, address + '\n');
    }
    return true;
  }

  /// Until the browser's command has ended.
  void wait() {
    if (_thread.joinable()) _thread.join();
  }

 private:
  const KeptState* _state;
  bool _opensBrowser;
  std::thread _thread;
};

/// The port of last time, with secrets that only its user knows; or another one with new secrets,
/// as whoever has the old port now may have seen the old ones.
Result<Listener> listen(const ViewArguments& arguments, Addresses& addresses) {
  const std::uint16_t wanted = arguments.port != 0 ? arguments.port : addresses.port;
  Result<Listener> listener = Listener::open(wanted);
  if (!listener && arguments.port == 0 && wanted != 0) listener = Listener::open(0);
  if (listener && listener->port() != addresses.port) {
    addresses = {.port = listener->port(), .viewSecret = newSecret(), .bookSecret = newSecret()};
  }
  return listener;
}

std::string addressOf(const Addresses& addresses) {
  return viewAddress({addresses.port, addresses.viewSecret, addresses.bookSecret});
}

void keep(const KeptState* state, const Addresses& addresses) {
  if (state == nullptr) return;
  const Status kept = state->keep(addresses);
  if (!kept) complain("The address cannot be kept: " + kept.error().description);
}

/// Waits until the user ends the program, or nobody needs it any more.
void waitForEnd(const ViewArguments& arguments, const Server& server, IndexKeeper& keeper) {
  const sigset_t signals = endingSignals();
  constexpr timespec second = {.tv_sec = 1, .tv_nsec = 0};
  while (::sigtimedwait(&signals, nullptr, &second) < 0) {
    keeper.closeIfIdle(longestIdle);
    const auto unasked = steady_clock::now() - server.lastRequest();
    if (!arguments.keep && unasked > longestUnasked) return;
  }
}

int serve(const ViewArguments& arguments, const KeptState* state,
          std::shared_ptr<const BookFolder> folder) {
  Addresses addresses = state != nullptr ? state->addresses() : Addresses();
  // Until it is, nobody is to be sent there.
  addresses.isServed = false;
  keep(state, addresses);
  Result<Listener> listener = listen(arguments, addresses);
  if (!listener) {
    return fail(ViewStatus::cannotServe,
                "The port cannot be used: " + listener.error().description);
  }
  const Origins origins{addresses.port, addresses.viewSecret, addresses.bookSecret,
                        arguments.allowNetwork};
  const Result<std::string> cache = cacheFolder();
  if (!cache) complain("The index cannot be kept: " + cache.error().description);
  IndexKeeper keeper({arguments.folder, arguments.indexFile}, cache ? *cache : std::string());
  const ViewSite view({.title = std::string(lastPathComponent(arguments.folder)),
                       .folder = arguments.folder,
                       .origin = bookOrigin(origins),
                       .allowsNetwork = arguments.allowNetwork},
                      folder, keeper);
  const BookSite book(std::move(folder), pageMaker(keeper));
  const Site site(
      origins, [&](const Request& request) { return view.answer(request); },
      [&](const Request& request) {
        return isOwnFile(request) ? ownFile(request) : book.answer(request);
      });
  const auto server = Server::start(*std::move(listener),
                                    [&](const Request& request) { return site.answer(request); });
  if (!server) return fail(ViewStatus::cannotServe, server.error().description);
  addresses.isServed = true;
  addresses.allowNetwork = arguments.allowNetwork;
  keep(state, addresses);
  Opener opener(state, arguments.opensBrowser);
  if (!opener.show(addressOf(addresses))) {
    return fail(ViewStatus::cannotServe, standardOutputError(errno).description);
  }
  waitForEnd(arguments, **server, keeper);
  unblockEndingSignals();
  addresses.isServed = false;
  keep(state, addresses);
  return status(ViewStatus::ended);
}

/// Leads to the book where another process serves it.
int showServed(const ViewArguments& arguments, const KeptState& state, const Addresses& addresses) {
  const bool isElsewhere = arguments.port != 0 && arguments.port != addresses.port;
  if (isElsewhere || arguments.allowNetwork != addresses.allowNetwork) {
    return fail(ViewStatus::cannotServe,
                "The book is open already, with another --port or --allow-network: end that first");
  }
  // The browser's command may take as long as it likes.
  unblockEndingSignals();
  Opener opener(&state, arguments.opensBrowser);
  const bool isShown = opener.show(addressOf(addresses));
  opener.wait();
  return status(isShown ? ViewStatus::ended : ViewStatus::cannotServe);
}

/// Serves the book, unless another process does. One that is about to begin or to end is waited
/// for.
int serveOrShow(const ViewArguments& arguments, const KeptState& state,
                const std::shared_ptr<const BookFolder>& folder) {
  constexpr int tries = 50;
  for (int i = 0; i < tries; ++i) {
    if (state.lock()) return serve(arguments, &state, folder);
    const Addresses addresses = state.addresses();
    if (addresses.isServed) return showServed(arguments, state, addresses);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return fail(ViewStatus::cannotServe, "Another process has the book, but does not serve it");
}

int open(ViewArguments& arguments) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::canonical(arguments.folder, error);
  if (error) return fail(ViewStatus::unreadableBook, arguments.folder + ": " + error.message());
  arguments.folder = folder;
  Result<std::shared_ptr<const BookFolder>> book = BookFolder::open(arguments.folder);
  if (!book) {
    return fail(ViewStatus::unreadableBook, arguments.folder + ": " + book.error().description);
  }
  std::string identity = arguments.folder;
  if (arguments.indexFile) {
    const std::filesystem::path file = std::filesystem::canonical(*arguments.indexFile, error);
    if (!error) arguments.indexFile = file;
    const Expected<HelpIndex> index = HelpIndex::open(*arguments.indexFile);
    if (!index) return fail(ViewStatus::unreadableBook, index.failure().message);
    identity += '\0' + *arguments.indexFile;
  }
  const Result<std::string> kept = stateFolder();
  const Result<KeptState> state =
      kept ? KeptState::open(*kept, identity) : Result<KeptState>(kept.error());
  if (state) return serveOrShow(arguments, *state, *book);
  complain("The address cannot be kept: " + state.error().description);
  return serve(arguments, nullptr, *book);
}

}  // namespace

int runViewProgram(std::span<char* const> words) try {
  keepLittleFreeMemory();
  unsetEmptyLocaleVariables();
  Result<ViewArguments> arguments = parseViewArguments(words);
  if (!arguments) {
    complain(arguments.error().description);
    writeFully(STDERR_FILENO, "Try 'quorvex-view --help'.\n");
    return status(ViewStatus::misuse);
  }
  if (arguments->help) return print(usage);
  if (arguments->version) return print(std::string("quorvex-view ") + quorvex_version() + '\n');
  // A full disk, or a reader that has gone, is told by the write that fails.
  for (const int signal : {SIGPIPE, SIGXFSZ})
    std::signal(signal, SIG_IGN);
  // Before there are threads, which inherit it.
  const sigset_t signals = endingSignals();
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return open(*arguments);
} catch (const std::bad_alloc&) {
  return fail(ViewStatus::cannotServe, "Not enough memory");
} catch (const std::system_error& error) {
  return fail(ViewStatus::cannotServe, error.code().message());  // no more threads
}

}  // namespace quorvex::view
