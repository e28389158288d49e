#include "generate/stop_words.h"

#include "common/files.h"
#include "common/keyed_document.h"
#include "common/log.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr std::size_t codeLength = 2;

/// Null when there is no such array.
std::optional<Value> builtInWords(const std::string& code, const std::string& path) {
  Result<Value> lists = readKeyedDocument(path);
  if (!lists || lists->dictionary() == nullptr) return std::nullopt;
  const Value* words = find(*lists->dictionary(), code);
  if (words == nullptr || words->array() == nullptr) return std::nullopt;
  return *words;
}

std::optional<Value> userWords(const std::string& path) {
  Result<Value> words = readKeyedDocument(standardizePath(path));
  if (!words || words->array() == nullptr) return std::nullopt;
  return *std::move(words);
}

}  // namespace

std::set<std::string> stopWords(const std::optional<std::string>& argument,
                                const std::string& builtInPath) {
  std::set<std::string> set;
  if (!argument || argument->empty()) return set;
  const std::size_t length = characterCount(*argument);
  std::optional<Value> words;
  if (length == codeLength) words = builtInWords(*argument, builtInPath);
  if (length > codeLength) words = userWords(*argument);
  if (!words) {
    QXLog(1, "Couldn't open stopwords kvdoc at path: %@", builtInStopWordsPath);
    return set;
  }
  for (Value& word : *words->array()) {
    if (std::string* text = word.string()) set.insert(std::move(*text));
  }
  return set;
}

}  // namespace quorvex
