#include "extract/page_parser.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <libxml/HTMLparser.h>
#include <libxml/dict.h>
#include <libxml/xmlmemory.h>

#include "common/memory_shortage.h"
#include "common/once.h"
#include "common/quiet_xml_errors.h"

namespace quorvex {

namespace {

/// The clock is read once per this many elements, attributes and errors: it is a system call.
constexpr unsigned eventsBetweenReadings = 128;

/// Monitors one run of the parser and stops it at a limit.
class Watch {
 public:
  Watch(htmlParserCtxt* parser, std::size_t pageSize, const PageLimits& limits)
      : _parser(parser),
        _limits(limits),
        _end(now() + allowedTime(pageSize, limits)),
        _startElement(std::exchange(parser->sax->startElement, onStartElement)) {
    current() = this;
  }
  ~Watch() { current() = nullptr; }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /// Null until a limit is exceeded.
  const char* passedLimit() const { return _passedLimit; }

  static void onError(void* context, XmlErrorPointer /*error*/) {
    static_cast<Watch*>(context)->countEvents(1);
  }

  /// Replaces realloc. During a single tag, however long, the parser calls nothing else of ours;
  /// only its table of attributes grows. (Refusing the memory would not help: the parser continues
  /// with the tag.)
  static void* resize(void* memory, std::size_t size) {
    Watch* watch = current();
    if (watch != nullptr && memory != nullptr && memory == watch->_parser->atts &&
        size / sizeof(const xmlChar*) / 2 > watch->_limits.attributes) {
      watch->stop("A tag has too many attributes");
    }
    return std::realloc(memory, size);
  }

 private:
  /// libxml2's memory functions have no context, and the context of its events is the tree's.
  static Watch*& current() {
    thread_local Watch* watch = nullptr;
    return watch;
  }

  static std::clock_t now() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * CLOCKS_PER_SEC + time.tv_nsec / (1'000'000'000 / CLOCKS_PER_SEC);
  }

  static std::clock_t allowedTime(std::size_t pageSize, const PageLimits& limits) {
    const auto perByte = static_cast<double>(limits.secondsPerMiB) / (1024 * 1024);
    const double seconds =
        static_cast<double>(limits.seconds) + perByte * static_cast<double>(pageSize);
    return static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC);
  }

  static void onStartElement(void* context, const xmlChar* name, const xmlChar** attributes) {
    Watch* watch = current();
    unsigned nodes = 1;
    for (const xmlChar** at = attributes; at != nullptr && *at != nullptr; at += 2)
      ++nodes;
    watch->_nodes += nodes;
    if (watch->_nodes > watch->_limits.nodes) watch->stop("The page has too many elements");
    watch->countEvents(nodes);
    if (watch->_passedLimit == nullptr) watch->_startElement(context, name, attributes);
  }

  void countEvents(unsigned count) {
    _events += count;
    if (_events < eventsBetweenReadings) return;
    _events = 0;
    if (now() > _end) stop("The page takes too long");
  }

  void stop(const char* limit) {
    if (_passedLimit != nullptr) return;
    _passedLimit = limit;
    xmlStopParser(_parser);
  }

  htmlParserCtxt* _parser;
  const PageLimits& _limits;
  std::clock_t _end;
  startElementSAXFunc _startElement;  ///< the tree's
  std::size_t _nodes = 0;
  unsigned _events = 0;  ///< since the last reading
  const char* _passedLimit = nullptr;
};

struct FreeParser {
  void operator()(htmlParserCtxt* parser) const { htmlFreeParserCtxt(parser); }
};
using Parser = std::unique_ptr<htmlParserCtxt, FreeParser>;

}  // namespace

void initializePageParser() {
  static Once initialized;
  initialized.run([] {
    xmlInitParser();
    // A program that brings its own functions keeps them, and the limit on attributes lapses.
    xmlFreeFunc release = nullptr;
    xmlMallocFunc allocate = nullptr;
    xmlReallocFunc resize = nullptr;
    xmlStrdupFunc copy = nullptr;
    xmlMemGet(&release, &allocate, &resize, &copy);
    if (resize == std::realloc) xmlMemSetup(release, allocate, Watch::resize, copy);
  });
}

ParsedPage parsePage(Data html, const PageLimits& limits, PageTreeKind kind) {
  initializePageParser();
  if (html.size() > maximumPageSize) return {nullptr, "The page is too large"};
  const Parser parser(
      htmlCreateMemoryParserCtxt(html.bytes().data(), static_cast<int>(html.size())));
  if (parser == nullptr) return {};
  const std::size_t size = html.size();
  html = {nullptr, ""};     // unlike Data(), allocates nothing
#if LIBXML_VERSION < 21200  // later versions do this themselves
  // As in htmlReadMemory: a page without a declared encoding is first read as UTF-8, and the
  // dictionary is limited to this size.
  parser->charset = XML_CHAR_ENCODING_UTF8;
  xmlDictSetLimit(parser->dict, 10'000'000);
#endif
  htmlCtxtUseOptions(parser.get(), HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
  auto tree = PageTree::create(kind, parser.get());
  Watch watch(parser.get(), size, limits);
  {
    const QuietXmlErrors errors(Watch::onError, &watch);
    htmlParseDocument(parser.get());
  }
  tree->take(parser.get());
  // If the dynamic loader has no memory for the encoding's converter, libxml2 continues with
  // another one or none.
  const xmlDoc* document = tree->document();
  if (document != nullptr && document->encoding != nullptr &&
      xmlStrcasecmp(document->encoding, BAD_CAST "utf-8") != 0) {
    probeMemory();
  }
  if (watch.passedLimit() != nullptr) return {nullptr, watch.passedLimit()};
  return {std::move(tree), {}};
}

}  // namespace quorvex
