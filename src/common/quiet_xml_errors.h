#pragma once

#include <libxml/xmlerror.h>

namespace quorvex {

/// libxml2 prints some errors (those of converting the input among them) past every option and
/// handler of a parser. Its handlers for these are one set for each thread: while this lives, the
/// calling thread's are silent, or the given one hears of every error.
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
  static void dropError(void* /*context*/, xmlErrorPtr /*error*/) {}
  // NOLINTNEXTLINE(cert-dcl50-cpp): libxml2's signature
  static void dropMessage(void* /*context*/, const char* /*format*/, ...) {}

  xmlStructuredErrorFunc _structured = xmlStructuredError;
  void* _structuredContext = xmlStructuredErrorContext;
  xmlGenericErrorFunc _generic = xmlGenericError;
  void* _genericContext = xmlGenericErrorContext;
};

}  // namespace quorvex
