#include "view/page/page_encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include "common/unicode.h"
#include "view/page/html_tokens.h"

namespace quorvex::view {

namespace {

constexpr std::size_t declarationSize = 1024;  ///< in bytes
constexpr const char* utf8 = "UTF-8";
constexpr const char* windows1252 = "windows-1252";

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

/// Null if ICU does not know the name.
Converter openConverter(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &status));
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

/// Where browsers read more characters than the encoding has that a page names.
struct Extension {
  std::string_view named;  ///< by ICU
  const char* used;
};
constexpr auto extensions = std::to_array<Extension>({
    {"ISO-8859-1", windows1252},
    {"US-ASCII", windows1252},
    {"ibm-920_P100-1995", "windows-1254"},  // ISO-8859-9
    {"iso-8859_11-2001", "windows-874"},
    {"ibm-970_P110_P110-2006_U2", "windows-949"},  // EUC-KR
    {"ibm-1383_P110-1999", "gb18030"},             // GB2312
    {"ibm-5478_P100-1995", "gb18030"},             // GB_2312-80
    {"windows-936-2000", "gb18030"},               // GBK
    {"windows-950-2000", "Big5-HKSCS"},            // Big5
});

/// Whether all signs of ASCII mean themselves. In other encodings tags could hide from whoever
/// checks a page.
bool keepsAscii(UConverter* converter) {
  constexpr char first = 0x20;
  constexpr std::size_t count = 0x7F - first;
  std::array<char, count> bytes{};
  std::array<UChar, count + 1> characters{};
  for (std::size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<char>(first + static_cast<int>(i));
  UErrorCode status = U_ZERO_ERROR;
  ucnv_toUChars(converter, characters.data(), count + 1, bytes.data(), count, &status);
  return U_SUCCESS(status) && std::equal(bytes.begin(), bytes.end(), characters.begin());
}

/// Returns ICU's name of the encoding to read a page with that declares itself to be in one; null
/// if browsers have no such encoding.
std::optional<std::string> encodingNamed(std::string_view label) {
  constexpr std::size_t longestLabel = 40;
  // ICU takes options behind a comma.
  const bool isLabel = std::all_of(label.begin(), label.end(), [](char byte) {
    return byte > ' ' && byte < '\x7F' && byte != ',';
  });
  if (label.empty() || label.size() > longestLabel || !isLabel) return std::nullopt;
  if (isSameName(label, "x-user-defined")) return windows1252;
  const Converter converter = openConverter(std::string(label));
  if (converter == nullptr) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  const std::string_view name = ucnv_getName(converter.get(), &status);
  for (const Extension& extension : extensions) {
    if (extension.named == name) return extension.used;
  }
  switch (ucnv_getType(converter.get())) {
    case UCNV_UTF8:
    case UCNV_UTF16:  // whose declaration could not be read
    case UCNV_UTF16_BigEndian:
    case UCNV_UTF16_LittleEndian:
      return utf8;
    case UCNV_SBCS:
    case UCNV_MBCS:
      return keepsAscii(converter.get()) ? std::optional<std::string>(name) : std::nullopt;
    case UCNV_ISO_2022:
      return isSameName(label, "iso-2022-jp") ? std::optional<std::string>(name) : std::nullopt;
    default:
      return std::nullopt;
  }
}

/// Returns the value in a text like `text/html; charset=utf-8`.
std::optional<std::string> encodingAfter(std::string_view keyword, std::string_view text) {
  const auto skipBlanks = [&](std::size_t at) {
    while (at < text.size() && isHtmlSpace(text[at]))
      ++at;
    return at;
  };
  for (std::size_t at = 0; at + keyword.size() < text.size(); ++at) {
    if (!isSameName(text.substr(at, keyword.size()), keyword)) continue;
    std::size_t begin = skipBlanks(at + keyword.size());
    if (begin >= text.size() || text[begin] != '=') continue;
    begin = skipBlanks(begin + 1);
    if (begin == text.size()) break;
    const bool isQuoted = text[begin] == '"' || text[begin] == '\'';
    const std::string_view rest = text.substr(isQuoted ? begin + 1 : begin);
    const std::size_t end = isQuoted ? rest.find(text[begin]) : rest.find_first_of("; \t\n\f\r");
    if (isQuoted && end == std::string_view::npos) break;
    return encodingNamed(trimWhitespaceAndNewlines(rest.substr(0, end)));
  }
  return std::nullopt;
}

/// Returns what a meta element declares.
std::optional<std::string> encodingOf(HtmlAttributes attributes) {
  std::optional<std::string_view> charset;
  std::string_view content;
  bool isContentType = false;
  while (attributes.next()) {
    const std::string_view value = attributes.value();
    if (isSameName(attributes.name(), "charset") && !charset) charset = value;
    if (isSameName(attributes.name(), "content") && content.empty()) content = value;
    if (isSameName(attributes.name(), "http-equiv")) {
      isContentType = isContentType || isSameName(value, "content-type");
    }
  }
  if (charset) return encodingNamed(trimWhitespaceAndNewlines(*charset));
  return isContentType ? encodingAfter("charset", content) : std::nullopt;
}

std::optional<std::string> declaredEncoding(std::string_view beginning) {
  HtmlTokens tokens(beginning);
  for (HtmlToken token = tokens.next(); token.kind != HtmlToken::Kind::end; token = tokens.next()) {
    if (token.kind != HtmlToken::Kind::startTag || token.element != HtmlElement::meta) continue;
    const std::size_t behindName = token.begin + 1 + token.name.size();
    if (auto encoding = encodingOf(HtmlAttributes(beginning, behindName))) return encoding;
  }
  if (!beginning.starts_with("<?xml")) return std::nullopt;
  return encodingAfter("encoding", beginning.substr(0, beginning.find('>')));
}

/// ICU would put a control character where some encodings are ill-formed.
void replaceIllFormed(const void* /*context*/, UConverterToUnicodeArgs* arguments,
                      const char* /*bytes*/, std::int32_t /*size*/, UConverterCallbackReason reason,
                      UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;
  constexpr UChar replacement = 0xFFFD;
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, status);
}

std::string convert(std::string_view bytes, const std::string& encoding) {
  const Converter from = openConverter(encoding);
  const Converter to = openConverter(utf8);
  if (from == nullptr || to == nullptr) return validUtf8(std::string(bytes));
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(from.get(), replaceIllFormed, nullptr, nullptr, nullptr, &status);
  std::array<UChar, 4096> pivot{};
  std::array<char, 8192> piece{};
  UChar* pivotBegin = pivot.data();
  UChar* pivotEnd = pivot.data();
  const char* source = bytes.data();
  std::string converted;
  converted.reserve(bytes.size());
  bool isFirst = true;
  do {
    status = U_ZERO_ERROR;
    char* target = piece.data();
    ucnv_convertEx(to.get(), from.get(), &target, piece.data() + piece.size(), &source,
                   bytes.data() + bytes.size(), pivot.data(), &pivotBegin, &pivotEnd,
                   pivot.data() + pivot.size(), static_cast<UBool>(isFirst), 1, &status);
    converted.append(piece.data(), target);
    isFirst = false;
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  return converted;
}

}  // namespace

std::string_view utf8Page(std::string_view bytes, std::string& converted) {
  std::optional<std::string> encoding;
  if (bytes.starts_with("\xEF\xBB\xBF")) {
    encoding = utf8;
    bytes.remove_prefix(3);
  } else if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    encoding = bytes.front() == '\xFF' ? "UTF-16LE" : "UTF-16BE";
    bytes.remove_prefix(2);
  } else {
    encoding = declaredEncoding(bytes.substr(0, declarationSize));
  }
  if (!encoding || *encoding == utf8) {
    if (isValidUtf8(bytes)) return bytes;
    if (encoding) return converted = validUtf8(std::string(bytes));
    encoding = windows1252;
  }
  return converted = convert(bytes, *encoding);
}

}  // namespace quorvex::view
