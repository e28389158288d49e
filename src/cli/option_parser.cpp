#include "cli/option_parser.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <getopt.h>
#include <unistd.h>

#include "common/files.h"
#include "common/keyed_document.h"
#include "common/log.h"
#include "common/memory_shortage.h"
#include "common/output.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

void writeMessage(std::string_view format, std::initializer_list<FormatArgument> arguments) {
  writeFully(STDERR_FILENO, formatText(format, arguments));
}

/// Returns the argument as an absolute path; null when the current folder has no path.
std::optional<std::string> fileLocation(std::string_view argument) {
  std::string path = standardizePath(argument);
  if (path.starts_with('/')) return path;
  std::error_code error;
  const std::string folder = std::filesystem::current_path(error).string();
  if (error) return std::nullopt;
  // Again, since the relative path may climb out of the folder.
  return standardizePath(appendPathComponent(folder, path));
}

}  // namespace

/// Collects the effects of a command line's options.
class OptionSink {
 public:
  explicit OptionSink(const std::function<bool()>& lowerPriority) : _lowerPriority(lowerPriority) {}

  Options options;

  void reject() { options.badOption = true; }
  void setIndexFormat(std::string_view name);
  void setIndexFile(std::string_view path);
  void addPredicate(std::vector<Predicate>& predicates, std::string_view expression) const;
  void setLocale(std::string_view identifier);
  void setMinimumTermLength(const char* number);
  void lowerPriority();
  void setRemoteURL(const char* url);
  void raiseVerbosity();
  void readExternalDescription(const char* path);

 private:
  const std::function<bool()>& _lowerPriority;
};

void OptionSink::setIndexFormat(std::string_view name) {
  const std::string folded = caseFolded(name);
  if (folded == "beacon") {
    options.indexFormat = IndexFormat::beacon;
  } else if (folded == "lsm") {
    options.indexFormat = IndexFormat::lsm;
  }
}

void OptionSink::setIndexFile(std::string_view path) {
  if (path.empty()) return;
  if (std::optional<std::string> location = fileLocation(path)) {
    options.indexFilePath = std::move(location);
  }
}

void OptionSink::addPredicate(std::vector<Predicate>& predicates,
                              std::string_view expression) const {
  if (!isValidUtf8(expression)) return;
  if (Result<Predicate> predicate = Predicate::matching(expression)) {
    predicates.push_back(*std::move(predicate));
  } else {
    QXLog(1, "Failed creating predicate for regex: %@", expression);
  }
}

void OptionSink::setLocale(std::string_view identifier) {
  if (!isValidUtf8(identifier)) return;
  if (std::optional<Locale> locale = Locale::withIdentifier(identifier)) {
    options.locale = *std::move(locale);
  }
}

void OptionSink::setMinimumTermLength(const char* number) {
  // Like atoi: non-numeric text counts as 0.
  const long value = std::strtol(number, nullptr, 10);
  if (value == 2 || value == 3) options.minimumTermLength = static_cast<std::uint64_t>(value);
}

void OptionSink::lowerPriority() {
  if (!_lowerPriority()) writeMessage("Could not lower process priority as expected.\n", {});
  options.loweredPriority = true;
}

void OptionSink::setRemoteURL(const char* url) {
  // The short form has no argument, so it sets no URL.
  if (url == nullptr || !isValidUtf8(url)) return;
  if (std::optional<URL> parsed = URL::parse(percentEncodePath(url))) {
    options.remoteURL = std::move(parsed);
  }
}

void OptionSink::raiseVerbosity() {
  raiseLogVerbosity();
  options.verbose = true;
}

void OptionSink::readExternalDescription(const char* path) {
  options.externalDescription = nullptr;
  Result<Value> document = readKeyedDocument(expandTilde(path));
  if (Dictionary* dictionary = document ? document->dictionary() : nullptr) {
    options.externalDescription = std::make_shared<const Dictionary>(std::move(*dictionary));
  } else {
    probeMemory();  // if memory ran out, no index of other pages is made
    writeMessage("Could not read specified external HelpBook description at %s.\n", {path});
  }
}

namespace {

using Sink = OptionSink&;
using Text = const char*;

// NOLINTBEGIN(readability-identifier-length)
constexpr std::array<OptionDescription, 28> table = {{
    {"create", 'C', false, "build an index from a directory",
     [](Sink s, Text) { s.options.create = true; }},
    {"append-RDX-only", 'L', false, "with -C, only replace the semantic index of an index file",
     [](Sink s, Text) { s.options.appendRDXOnly = true; }},
    {"index-format", 'I', true, "index format, lsm or beacon",
     [](Sink s, Text text) { s.setIndexFormat(text); }},
    {"list-anchors", 'A', false, "list the anchors' names",
     [](Sink s, Text) { s.options.listMode = ListMode::anchors; }},
    {"list-anchor-dictionary", 'D', false, "list the anchors with their pages",
     [](Sink s, Text) { s.options.listMode = ListMode::anchorDictionary; }},
    {"list-index-versions", 'E', false, "list the versions that made the index",
     [](Sink s, Text) { s.options.listMode = ListMode::indexVersions; }},
    {"list-files", 'F', false, "list the indexed files",
     [](Sink s, Text) { s.options.listMode = ListMode::files; }},
    {"list-file-terms", 'T', false, "list the indexed files with their terms",
     [](Sink s, Text) { s.options.listMode = ListMode::fileTerms; }},
    {"list-min-term-length", 'M', false, "list the minimum term length",
     [](Sink s, Text) { s.options.listMode = ListMode::minTermLength; }},
    {"list-remote-url", 'R', false, "rejected", [](Sink s, Text) { s.reject(); }},
    {"list-stopwords", 'S', false, "list the stop words",
     [](Sink s, Text) { s.options.listMode = ListMode::stopwords; }},
    {"list-RDX-summary", 'K', false, "rejected", [](Sink s, Text) { s.reject(); }},
    {"purge-caches", 'P', false, "shut down the help system and clear its caches",
     [](Sink s, Text) { s.options.purgeCaches = true; }},
    {"help", 'h', false, "print the usage", [](Sink s, Text) { s.options.help = true; }},
    {"version", 'V', false, "print the version",
     [](Sink s, Text) { s.options.printVersion = true; }},
    {"file", 'f', true, "the index file", [](Sink s, Text text) { s.setIndexFile(text); }},
    {"verbose", 'v', false, "print more; may be repeated",
     [](Sink s, Text) { s.raiseVerbosity(); }},
    {"anchors", 'a', false, "index anchors", [](Sink s, Text) { s.options.indexAnchors = true; }},
    {"exclude", 'e', true, "leave out pages whose path matches a regular expression",
     [](Sink s, Text text) { s.addPredicate(s.options.excludePredicates, text); }},
    {"generate-summaries", 'g', false, "make summaries for pages without one",
     [](Sink s, Text) { s.options.generateSummaries = true; }},
    {"include", 'i', true, "take pages whose path matches a regular expression",
     [](Sink s, Text text) { s.addPredicate(s.options.includePredicates, text); }},
    {"min-term-length", 'm', true, "minimum term length, 1 to 3",
     [](Sink s, Text text) { s.setMinimumTermLength(text); }},
    {"send-notifications", 'n', false, "send progress notifications",
     [](Sink s, Text) { s.options.sendNotifications = true; }},
    {"remote-url", 'r', true, "remote root URL of the index",
     [](Sink s, Text text) { s.setRemoteURL(text); }},
    {"locale", 'l', true, "locale identifier of the index",
     [](Sink s, Text text) { s.setLocale(text); }},
    {"stopwords", 's', true, "language code or file of the stop words",
     [](Sink s, Text text) { s.options.stopwordsArgument = text; }},
    {"external-description", 'x', true, "read the pages from a description file",
     [](Sink s, Text text) { s.readExternalDescription(text); }},
    {"lowered-priority", 'p', false, "run in the background",
     [](Sink s, Text) { s.lowerPriority(); }},
}};
// NOLINTEND(readability-identifier-length)

/// In getopt's format, with its all-zero terminator.
std::array<option, table.size() + 1> longOptions() {
  std::array<option, table.size() + 1> options{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    options[i] = {table[i].longName, table[i].takesArgument ? required_argument : no_argument,
                  nullptr, table[i].letter};
  }
  return options;
}

void apply(int letter, const char* argument, OptionSink& sink) {
  for (const OptionDescription& description : table) {
    if (description.letter == letter) return description.apply(sink, argument);
  }
  if (letter == '1') {
    sink.options.oneByOne = true;
  } else {
    sink.reject();
  }
}

}  // namespace

std::span<const OptionDescription> optionDescriptions() {
  return table;
}

CommandLine parseCommandLine(std::span<char*> arguments,
                             const std::function<bool()>& lowerPriority) {
  CommandLine commandLine;
  if (arguments.empty()) return commandLine;
  commandLine.programName = arguments.front();
  OptionSink sink(lowerPriority);
  const auto options = longOptions();
  optind = 0;  // resets getopt
  for (;;) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): main thread only
    const int letter = ::getopt_long(static_cast<int>(arguments.size()), arguments.data(),
                                     shortOptions, options.data(), nullptr);
    if (letter == -1) break;
    apply(letter, optarg, sink);
  }
  for (const char* rest : arguments.subspan(static_cast<std::size_t>(optind))) {
    commandLine.arguments.emplace_back(rest);
  }
  commandLine.options = std::move(sink.options);
  return commandLine;
}

}  // namespace quorvex
