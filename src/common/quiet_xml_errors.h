#pragma once

#include <new>

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace quorvex {

/// What a handler of libxml2's errors is given.
#if LIBXML_VERSION < 21200
using XmlErrorPointer = xmlError*;
#else
using XmlErrorPointer = const xmlError*;
#endif

/// libxml2 prints some errors (those of converting the input among them) past every option and
/// handler of a parser. Its handlers for these are one set for each thread: while this lives, the
/// calling thread's are silent, or the given one hears of every error. Throws std::bad_alloc where
/// libxml2 could not have its state for the thread.
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
  /// libxml2 makes its state for a thread at the first use, and where it gets no memory for that,
  /// it reports so by means of that very state, without end. What was just freed, it gets.
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
