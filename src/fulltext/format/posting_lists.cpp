#include "fulltext/format/posting_lists.h"

#include <span>

#include "common/bytes.h"
#include "text/term_dictionary.h"

namespace quorvex {

namespace {

/// Appends the posting list of one term; returns its size in bytes.
std::size_t encodePostings(std::span<const std::uint32_t> documents, std::string& out) {
  const std::size_t begin = out.size();
  std::uint32_t expected = 0;
  for (const std::uint32_t document : documents) {
    appendVarint(out, document - expected);
    expected = document + 1;
  }
  return out.size() - begin;
}

}  // namespace

std::string encodeTerms(const std::vector<std::string_view>& terms,
                        const std::vector<std::uint32_t>& documentCounts,
                        const std::vector<std::uint32_t>& postingDocuments, std::string& postings) {
  TermDictionaryBuilder builder(false);
  std::span<const std::uint32_t> left(postingDocuments);
  for (std::size_t i = 0; i < terms.size(); ++i) {
    const std::uint32_t count = documentCounts[i];
    builder.add(terms[i], count, encodePostings(left.first(count), postings));
    left = left.subspan(count);
  }
  return builder.take();
}

}  // namespace quorvex
