#pragma once

#include <new>

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace quorvex {

/// The argument of a libxml2 error handler.
#if LIBXML_VERSION < 21200
using XmlErrorPointer = xmlError*;
#else
using XmlErrorPointer = const xmlError*;
#endif

/// libxml2 reports some errors (such as those of input conversion) to per-thread handlers, whatever
/// the options and handlers of the parser. While this object lives, the calling thread's handlers
/// print nothing, or `onError` receives every error. Throws std::bad_alloc if libxml2 could not
/// allocate its state for the thread.
class QuietXmlErrors {
 public:
  explicit QuietXmlErrors(xmlStructuredErrorFunc onError = dropError, void* context = nullptr) {
    xmlSetStructuredErrorFunc(context, onError);
    xmlSetGenericErrorFunc(nullptr, dropMessage);
  }
  ~QuietXmlErrors() {
    xmlSetStructuredErrorFunc(_structuredContext, _structured);
    xmlSetGenericErrorFunc(_genericContext, _generic);
  }
  QuietXmlErrors(const QuietXmlErrors&) = delete;
  QuietXmlErrors& operator=(const QuietXmlErrors&) = delete;

 private:
  static void dropError(void* /*context*/, XmlErrorPointer /*error*/) {}
  // NOLINTNEXTLINE(cert-dcl50-cpp): libxml2's signature
  static void dropMessage(void* /*context*/, const char* /*format*/, ...) {}

#if LIBXML_VERSION < 21200
  /// libxml2 allocates its per-thread state at first use; if that fails, it reports the error
  /// through the same state and recurses endlessly. Memory that was just freed is available to it.
  struct StateFits {
    StateFits() { ::operator delete(::operator new(sizeof(xmlGlobalState))); }
  };
  [[no_unique_address]] StateFits _stateFits;
#endif
  xmlStructuredErrorFunc _structured = xmlStructuredError;
  void* _structuredContext = xmlStructuredErrorContext;
  xmlGenericErrorFunc _generic = xmlGenericError;
  void* _genericContext = xmlGenericErrorContext;
};

}  // namespace quorvex
