#include "fulltext/searching/explained_words.h"

#include <algorithm>
#include <map>
#include <string>

#include "fulltext/searching/document_filter.h"

namespace quorvex::textsearch {

namespace {

std::vector<TSExplainedWord::Form> formsOf(const IndexReader& index, const TitleIndex& titles,
                                           const WordTerms& terms) {
  using Form = TSExplainedWord::Form;
  std::map<std::string, Form> forms;
  const auto add = [&](const std::string& text, float weight, std::size_t documents) {
    Form& form = forms.try_emplace(text, Form{text, 0, 0}).first->second;
    form.weight = std::max(form.weight, double{weight});
    form.documents = std::max(form.documents, documents);
  };
  for (const TextTerm& term : terms.inTexts) {
    add(index.terms().term(term.entry.id).value_or(""), term.weight, term.entry.documentCount);
  }
  for (const TitleTerm& title : terms.inTitles)
    add(titles.term(title.term), title.weight, titles.titleCount(title.term));
  std::vector<Form> sorted;
  sorted.reserve(forms.size());
  for (auto& [text, form] : forms)
    sorted.push_back(std::move(form));
  std::ranges::stable_sort(sorted, [](const Form& a, const Form& b) {
    return a.weight != b.weight ? a.weight > b.weight : a.documents > b.documents;
  });
  return sorted;
}

}  // namespace

std::vector<TSExplainedWord> explainWords(const IndexReader& index, const TitleIndex& titles,
                                          const TSSearchedWords& searched) {
  std::vector<TSExplainedWord> words;
  for (const RankedWord& word : searched.words) {
    DocumentMask holding(index.documents().size());
    markDocuments(index, titles, *word.terms, holding);
    words.push_back({.word = word.word,
                     .weight = double{word.weight},
                     .documents = static_cast<std::size_t>(std::ranges::count(holding, 1)),
                     .forms = formsOf(index, titles, *word.terms)});
  }
  return words;
}

}  // namespace quorvex::textsearch
