#include "text/stemmer.h"

#include <string>

#include <libstemmer.h>

namespace quorvex {

void Stemmer::Deleter::operator()(sb_stemmer* stemmer) const {
  sb_stemmer_delete(stemmer);
}

Stemmer::Stemmer(std::string_view language) {
  // Both written forms of Norwegian share the stemmer of their common code.
  const std::string code(language == "nb" || language == "nn" ? "no" : language);
  if (!code.empty()) _stemmer.reset(sb_stemmer_new(code.c_str(), nullptr));
}

std::string_view Stemmer::stem(std::string_view word) {
  if (!_stemmer) return word;
  // Terms are short (maximumTermSize), so their length fits an int.
  const sb_symbol* stem =
      sb_stemmer_stem(_stemmer.get(), reinterpret_cast<const sb_symbol*>(word.data()),
                      static_cast<int>(word.size()));
  if (stem == nullptr) return word;
  return {reinterpret_cast<const char*>(stem),
          static_cast<std::size_t>(sb_stemmer_length(_stemmer.get()))};
}

}  // namespace quorvex
