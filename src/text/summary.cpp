#include <algorithm>
#include <cmath>
#include <numeric>

#include <unicode/uchar.h>

#include "common/unicode.h"
#include "platform/textsift.h"
#include "text/sentences.h"
#include "text/term_table.h"
#include "text/tokenizer.h"

namespace quorvex {

class TSSummary {
 public:
  struct Sentence {
    std::string text;  ///< not shortened
    double score = 0;
  };
  std::vector<Sentence> sentences;  ///< in text order
};

namespace {

// The start of a text shows what it is about; more would only cost time.
constexpr std::size_t consideredSize = std::size_t{16} << 10U;
// In characters. Longer sentences are shortened: they are tables and listings without full stops.
constexpr std::size_t longestSentence = 500;

/// A sentence with the data for scoring it.
struct Draft {
  std::string_view text;
  std::vector<std::uint32_t> terms;  ///< distinct
  std::size_t words = 0;
  std::size_t capitalised = 0;  ///< words that start with a capital
};

Draft draftOf(std::string_view sentence, Tokenizer& tokenizer, TermTable& table) {
  Draft draft;
  draft.text = sentence;
  tokenizer.reset(sentence);
  Token token;
  while (tokenizer.next(token)) {
    ++draft.words;
    std::size_t position = token.begin;
    if (u_isUUppercase(static_cast<UChar32>(nextCharacter(sentence, position)))) {
      ++draft.capitalised;
    }
    draft.terms.push_back(table.insert(token.term));
  }
  std::ranges::sort(draft.terms);
  draft.terms.erase(std::unique(draft.terms.begin(), draft.terms.end()), draft.terms.end());
  return draft;
}

/// Whether a sentence ends in one or two digits and a full stop, like "Next Chapter 5." at the top
/// of a page, where a heading was cut after its number.
bool endsInSectionNumber(std::string_view sentence) {
  if (!sentence.ends_with('.')) return false;
  const std::size_t last = sentence.find_last_not_of("0123456789", sentence.size() - 2);
  const std::size_t digits = sentence.size() - 1 - (last == sentence.npos ? 0 : last + 1);
  return digits == 1 || digits == 2;
}

/// Returns 1 for running text, less for likely navigation, headings and listings.
double proseFactor(const Draft& draft) {
  const bool numbered = draft.words < 25 && endsInSectionNumber(draft.text);
  double factor = endsLikeSentence(draft.text) && !numbered ? 1 : 0.3;
  if (draft.words < 3) {
    factor *= 0.05;
  } else if (draft.words < 6) {
    factor *= 0.4;
  } else if (draft.words > 40) {
    factor *= 40 / static_cast<double>(draft.words);
  }
  if (draft.words > 3 && draft.capitalised * 10 > draft.words * 6) factor *= 0.4;
  const std::size_t separators = separatorCount(draft.text);
  if (separators * 6 > draft.words) factor *= 0.3;
  return factor;
}

/// Returns the weight of each term: how many other sentences contain it, less if most of them do
/// (Radev, Jing, Styś, Tam 2004, centroid-based summarization, with sentences as documents).
std::vector<double> centroidOf(const std::vector<Draft>& drafts, std::size_t termCount) {
  std::vector<double> weights(termCount);
  for (const Draft& draft : drafts) {
    for (const std::uint32_t term : draft.terms)
      ++weights[term];
  }
  const auto count = static_cast<double>(drafts.size());
  for (double& weight : weights)
    weight = (weight - 1) * std::log((count + 1) / (weight + 0.5));
  return weights;
}

void score(const std::vector<Draft>& drafts, std::size_t termCount,
           std::vector<TSSummary::Sentence>& sentences) {
  const std::vector<double> weights = centroidOf(drafts, termCount);
  std::vector<double> likeness;
  for (const Draft& draft : drafts) {
    double sum = 0;
    for (const std::uint32_t term : draft.terms)
      sum += weights[term];
    likeness.push_back(sum / std::sqrt(static_cast<double>(draft.terms.size()) + 1));
  }
  const double best = std::max(1e-9, *std::ranges::max_element(likeness));
  double proseBefore = 0;
  for (std::size_t i = 0; i < drafts.size(); ++i) {
    const double prose = proseFactor(drafts[i]);
    const double lead = 1 / std::sqrt(1 + proseBefore);
    sentences[i].score = prose * (likeness[i] / best + lead);
    proseBefore += prose;
  }
}

std::string shortened(const std::string& sentence) {
  const std::string_view words = firstWords(sentence, longestSentence);
  return words.size() == sentence.size() ? sentence : std::string(words) + "…";
}

}  // namespace

std::shared_ptr<TSSummary> TSSummaryCreateWithString(std::string_view text,
                                                     std::span<const std::size_t> paragraphStarts) {
  const bool isCut = text.size() > consideredSize;
  if (isCut) text = text.substr(0, characterStart(text, consideredSize));
  const std::vector<std::string> paragraphs = paragraphsOf(text, paragraphStarts);
  SentenceSplitter splitter;
  Tokenizer tokenizer(contractionMarks);
  TermTable table;
  std::vector<Draft> drafts;
  for (const std::string& paragraph : paragraphs) {
    splitter.reset(paragraph);
    for (std::string_view sentence; splitter.next(sentence);) {
      Draft draft = draftOf(sentence, tokenizer, table);
      if (draft.words > 0) drafts.push_back(std::move(draft));
    }
  }
  // The last sentence may continue past the cut.
  if (isCut && drafts.size() > 1) drafts.pop_back();
  if (drafts.empty()) return nullptr;
  auto summary = std::make_shared<TSSummary>();
  for (const Draft& draft : drafts)
    summary->sentences.push_back({std::string(draft.text)});
  score(drafts, table.size(), summary->sentences);
  return summary;
}

std::optional<std::string> TSSummaryCopySentenceSummaryString(
    const std::shared_ptr<TSSummary>& summary, std::size_t count) {
  if (summary == nullptr || count == 0) return std::nullopt;
  const std::vector<TSSummary::Sentence>& sentences = summary->sentences;
  std::vector<std::size_t> chosen(sentences.size());
  std::iota(chosen.begin(), chosen.end(), std::size_t{0});
  std::ranges::stable_sort(chosen, [&](std::size_t a, std::size_t b) {
    return sentences[a].score > sentences[b].score;
  });
  chosen.resize(std::min(count, chosen.size()));
  std::ranges::sort(chosen);
  std::string text;
  for (const std::size_t i : chosen) {
    if (!text.empty()) text += ' ';
    text += shortened(sentences[i].text);
  }
  return text;
}

}  // namespace quorvex
