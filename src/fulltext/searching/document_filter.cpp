#include "fulltext/searching/document_filter.h"

#include "fulltext/searching/phrases.h"

namespace quorvex::textsearch {

void markDocuments(const IndexReader& index, const TitleIndex& titles, const WordTerms& terms,
                   DocumentMask& mask) {
  for (const TextTerm& term : terms.inTexts) {
    for (PostingCursor posting = index.postings(term.entry); posting.next();)
      mask[posting.document()] = 1;
  }
  for (const TitleTerm& title : terms.inTitles) {
    for (const TitleIndex::Posting& posting : titles.postings(title.term))
      mask[posting.document] = 1;
  }
}

/// `clause`: a word, or a phrase whose last word is being typed.
DocumentMask DocumentFilter::holding(const QueryClause& clause, std::string_view language,
                                     Stemmer& stemmer) const {
  DocumentMask mask(_index.documents().size());
  const Matching matching = clause.isPhrase ? Matching::beginning : Matching::inflected;
  const WordLookup::Terms last =
      _lookup.find(clause.words.back().term, matching, language, stemmer);
  if (clause.words.size() == 1) {
    markDocuments(_index, _titles, *last, mask);
    return mask;
  }
  for (const std::uint32_t document :
       documentsWithPhraseBeginning(_index, _titles, clause.words, *last))
    mask[document] = 1;
  return mask;
}

DocumentMask DocumentFilter::allowed(const Query& query, std::string_view language,
                                     Stemmer& stemmer) const {
  DocumentMask allowed;
  std::vector<SoughtPhrase> phrases;
  for (const QueryClause& clause : query.clauses) {
    if (!clause.isPhrase && !clause.isExcluded) continue;
    if (allowed.empty()) allowed.assign(_index.documents().size(), 1);
    if (clause.isPhrase && !clause.isPrefix) {
      phrases.push_back({&clause.words, clause.isExcluded});
      continue;
    }
    const DocumentMask mask = holding(clause, language, stemmer);
    const std::uint8_t wanted = clause.isExcluded ? 0 : 1;
    for (std::size_t i = 0; i < mask.size(); ++i)
      allowed[i] = allowed[i] != 0 && mask[i] == wanted ? 1 : 0;
  }
  if (!phrases.empty()) restrictToPhrases(_index, _titles, phrases, allowed);
  return allowed;
}

}  // namespace quorvex::textsearch
