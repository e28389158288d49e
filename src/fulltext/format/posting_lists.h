#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// Makes a TermDictionary from terms in byte order with their document counts. `postingDocuments`:
/// the posting lists of all terms, concatenated; they are appended to `postings` as gaps.
std::string encodeTerms(const std::vector<std::string_view>& terms,
                        const std::vector<std::uint32_t>& documentCounts,
                        const std::vector<std::uint32_t>& postingDocuments, std::string& postings);

}  // namespace quorvex
