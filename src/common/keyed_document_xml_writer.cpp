#include <array>
#include <charconv>
#include <memory>

#include <libxml/xmlwriter.h>

#include "common/base64.h"
#include "common/key_repair.h"
#include "common/keyed_document.h"
#include "common/nesting.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Returns the length of the character at `position` if XML 1.0 forbids it, else 0.
std::size_t forbiddenAt(std::string_view text, std::size_t position) {
  const auto byte = static_cast<unsigned char>(text[position]);
  if (byte < 0x20) return byte == '\t' || byte == '\n' || byte == '\r' ? 0 : 1;
  if (byte != 0xEF) return 0;
  const std::string_view character = text.substr(position, 3);
  return character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF" ? 3 : 0;
}

bool isXmlText(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (forbiddenAt(text, i) != 0) return false;
  }
  return isValidUtf8(text);
}

std::string xmlText(std::string text) {
  text = validUtf8(std::move(text));
  std::string repaired;
  repaired.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = forbiddenAt(text, i);
    if (length == 0) {
      repaired += text[i++];
    } else {
      repaired += replacement;
      i += length;
    }
  }
  return repaired;
}

const xmlChar* xml(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

class DocumentWriter {
 public:
  DocumentWriter()
      : _writer(xmlNewTextWriter(xmlOutputBufferCreateIO(append, nullptr, &_document, nullptr)),
                xmlFreeTextWriter) {}

  Result<std::string> write(const Value& root) {
    if (_writer == nullptr) return Error{"Out of memory"};
    // Raw: given the encoding, libxml2 would convert every text from UTF-8 to UTF-8.
    raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    start("kvdoc");
    xmlTextWriterWriteAttribute(_writer.get(), xml("version"), xml("1.0"));
    raw("\n");
    value(root, 0);
    raw("\n");
    end();
    raw("\n");
    xmlTextWriterFlush(_writer.get());
    if (!_status) return _status.error();
    if (_failed) return Error{"The XML writer failed"};
    return std::move(_document);
  }

 private:
  static int append(void* context, const char* bytes, int size) {
    static_cast<std::string*>(context)->append(bytes, static_cast<std::size_t>(size));
    return size;
  }

  void check(int outcome) { _failed = _failed || outcome < 0; }
  void raw(const char* text) { check(xmlTextWriterWriteRaw(_writer.get(), xml(text))); }
  void start(const char* name) { check(xmlTextWriterStartElement(_writer.get(), xml(name))); }
  void end() { check(xmlTextWriterEndElement(_writer.get())); }

  void newLine(unsigned depth) {
    _indentation.assign(1, '\n').append(depth, '\t');
    raw(_indentation.c_str());
  }

  void leaf(const char* name, const std::string& text) {
    start(name);
    check(xmlTextWriterWriteString(_writer.get(), xml(text.c_str())));
    end();
  }

  /// Text that needs no escaping.
  void plainLeaf(const char* name, const char* text) {
    start(name);
    raw(text);
    end();
  }

  void text(const char* name, const std::string& text) {
    isXmlText(text) ? leaf(name, text) : leaf(name, xmlText(text));
  }

  template <typename Number>
  void number(const char* name, Number value) {
    std::array<char, 32> digits{};
    *std::to_chars(digits.data(), digits.data() + digits.size() - 1, value).ptr = '\0';
    plainLeaf(name, digits.data());
  }

  void value(const Value& node, unsigned depth) {
    if (const std::string* string = node.string()) return text("string", *string);
    if (const Data* data = node.data())
      return plainLeaf("data", base64Encoded(data->bytes()).c_str());
    if (const std::int64_t* integer = node.integer()) return number("integer", *integer);
    if (const double* real = node.real()) return number("real", *real);
    if (const bool* flag = node.boolean()) {
      start(*flag ? "true" : "false");
      return end();
    }
    if (node.object() != nullptr) {
      _status = Error{"A keyed document cannot hold an object of class " + kindName(node)};
    } else if (depth == maximumNesting) {
      _status = Error{"Nested too deeply"};
    } else if (const Array* elements = node.array()) {
      array(*elements, depth);
    } else if (const Dictionary* entries = node.dictionary()) {
      dictionary(*entries, depth);
    }
  }

  void array(const Array& elements, unsigned depth) {
    start("array");
    for (const Value& element : elements) {
      newLine(depth + 1);
      value(element, depth + 1);
    }
    if (!elements.empty()) newLine(depth);
    end();
  }

  void dictionary(const Dictionary& entries, unsigned depth) {
    start("dict");
    RepairedKeys repairedKeys(entries);
    for (const auto& [key, entry] : entries) {
      if (isXmlText(key)) {
        newLine(depth + 1);
        leaf("key", key);
      } else {
        const std::string repaired = xmlText(key);
        if (!repairedKeys.claim(repaired)) continue;
        newLine(depth + 1);
        leaf("key", repaired);
      }
      newLine(depth + 1);
      value(entry, depth + 1);
    }
    if (!entries.empty()) newLine(depth);
    end();
  }

  std::string _document;
  std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> _writer;
  std::string _indentation;
  bool _failed = false;
  Status _status = okStatus();
};

}  // namespace

Result<std::string> keyedDocumentXml(const Value& value) {
  return DocumentWriter().write(value);
}

}  // namespace quorvex
