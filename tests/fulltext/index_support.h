#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/textsift.h"

namespace quorvex {

/// Builds an index, and reopens it from its bytes.
class IndexUnderTest {
 public:
  explicit IndexUnderTest(Dictionary properties = {})
      : _properties(std::move(properties)),
        _ref(TSIndexCreateWithMutableData(_buffer, std::nullopt, TSIndexType::inverted,
                                          _properties)) {}

  const TSIndexRef& ref() const { return _ref; }
  const Dictionary& properties() const { return _properties; }

  bool add(const std::string& path, std::string_view text, const Dictionary& properties = {},
           bool mayReplace = false) {
    const TSDocumentRef document = TSDocumentCreateWithURL(*URL::fileURL(path));
    if (!TSIndexAddDocumentWithText(_ref, document, text, mayReplace)) return false;
    return properties.empty() || TSIndexSetDocumentProperties(_ref, document, properties);
  }

  Data closed() {
    TSIndexClose(_ref);
    return Data(*_buffer);
  }
  TSIndexRef reopened() { return TSIndexOpenWithData(closed(), std::nullopt); }

 private:
  std::shared_ptr<std::string> _buffer = std::make_shared<std::string>();
  Dictionary _properties;
  TSIndexRef _ref;
};

/// Returns path, properties and terms of every document, one per line, children indented.
inline std::string outline(const TSIndexRef& index, const TSDocumentRef& parent = nullptr,
                           const std::string& indent = "") {
  std::string text;
  const auto documents = TSIndexDocumentIteratorCreate(index, parent);
  while (const TSDocumentRef document = TSIndexDocumentIteratorCopyNext(documents)) {
    const std::optional<URL> url = TSDocumentCopyURL(document);
    text += indent + (url ? url->path() : "(no URL)");
    if (const auto properties = TSIndexCopyDocumentProperties(index, document)) {
      std::string entries;
      for (const auto& [key, value] : *properties) {
        entries.append(entries.empty() ? "" : ",").append(key).append("=") += *value.string();
      }
      text += " {" + entries + "}";
    }
    const auto id = TSIndexGetDocumentID(index, document);
    for (const TSTermID term : TSIndexCopyTermIDArrayForDocumentID(index, *id)) {
      text += " " + TSIndexCopyTermStringForTermID(index, term).value_or("(no term)");
    }
    text += "\n" + outline(index, document, indent + "  ");
  }
  return text;
}

}  // namespace quorvex
