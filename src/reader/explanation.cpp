#include "reader/explanation.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "common/unicode.h"

namespace quorvex::reader {

namespace {

/// Forms of a word that are listed.
constexpr std::size_t mostForms = 6;
/// Words that are listed.
constexpr std::size_t mostWords = 32;

constexpr const char* meaningName = "meaning";
constexpr const char* byMeaningAlone = "Ranked by meaning alone";

constexpr std::array<std::pair<std::string_view, float TSScoreParts::*>, 5> partNames = {{
    {"words", &TSScoreParts::words},
    {"words near each other", &TSScoreParts::nearness},
    {"best section", &TSScoreParts::passage},
    {"title", &TSScoreParts::title},
    {"list of links or code", &TSScoreParts::furniture},
}};

/// With at most two decimals.
std::string numberText(double number) {
  std::array<char, 32> buffer{};
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::round(number * 100) / 100);
  return {buffer.data(), result.ptr};
}

std::string percentText(double share) {
  return std::to_string(std::lround(share * 100)) + " %";
}

std::string countText(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string lineOnMeaning(const TSSearchAnswer& answer, bool hasWords, bool hasMeaning,
                          RankedBy rankedBy) {
  if (rankedBy == RankedBy::words) return "Ranked by words alone";
  if (rankedBy == RankedBy::meaning) return byMeaningAlone;
  if (rankedBy == RankedBy::onlyWords) {
    return "Ranked by words alone: there is no semantic index to use";
  }
  if (!hasWords) return "Ranked by meaning alone: no page has any of the words";
  if (answer.wordCount == 0) return "Ranked by titles and names: texts lack all of the words";
  const double part = semanticPart(answer.wordCount, answer.coverage);
  if (part > 0 && !hasMeaning) {
    return "Ranked by words alone: the semantic index knows none of them";
  }
  const std::string share = part == 0 ? "does not count" : "counts " + percentText(part);
  return "Meaning " + share + ": " + countText(answer.wordCount, "word") +
         ", of which the best pages have " + percentText(answer.coverage);
}

/// "phone: phone, phones, smartphone \u00D70.6 (12 pages)"
std::string lineOnWord(const TSExplainedWord& word) {
  std::string line = word.word + ':';
  for (std::size_t i = 0; i < std::min(mostForms, word.forms.size()); ++i) {
    const TSExplainedWord::Form& form = word.forms[i];
    line += (i > 0 ? ", " : " ") + form.text;
    if (form.weight < 1) line += " \u00D7" + numberText(form.weight);
  }
  if (word.forms.size() > mostForms) {
    line += " and " + std::to_string(word.forms.size() - mostForms) + " more";
  }
  line += " (" + countText(word.documents, "page");
  if (word.weight != 1) line += ", weight " + numberText(word.weight);
  return validUtf8(line + ')');
}

}  // namespace

Explanation::Explanation(const TSSearchRef& search, const TSSearchAnswer& answer,
                         const std::vector<ScoredPage>& byWords,
                         const std::vector<ScoredPage>& byMeaning, RankedBy rankedBy)
    : _weights(
          rankingWeights(byWords, byMeaning, semanticPart(answer.wordCount, answer.coverage))) {
  for (const TSSearchHit& hit : answer.hits)
    _sources[hit.document].words = hit.parts;
  for (const ScoredPage& page : byMeaning)
    _sources[page.page].meaning = page.score;
  _lines.push_back(lineOnMeaning(answer, !byWords.empty(), !byMeaning.empty(), rankedBy));
  for (const TSExplainedWord& word : TSSearchExplainWords(search, answer)) {
    if (_lines.size() > mostWords) break;
    _lines.push_back(lineOnWord(word));
  }
}

void Explanation::addTo(std::span<quorvex_hit> hits) const {
  for (quorvex_hit& hit : hits)
    hit.parts = partsOf(hit);
}

std::vector<quorvex_part> Explanation::partsOf(const quorvex_hit& hit) const {
  std::vector<quorvex_part> parts;
  double left = hit.score;
  const auto add = [&](std::string name, double value) {
    // Less is an error of rounding: the parts were added as floats.
    if (std::abs(value) <= 1e-5 * hit.score) return;
    parts.push_back({.name = std::move(name), .value = value});
    left -= value;
  };
  if (const auto found = _sources.find(hit.number); found != _sources.end()) {
    const Sources& sources = found->second;
    for (const auto& [name, member] : partNames)
      add(std::string(name), _weight * _weights.words * double{sources.words.*member});
    add(meaningName, _weight * _weights.meaning * sources.meaning);
  }
  if (hit.name) {
    add("defines the name " + *hit.name, left);
  } else {
    add(left < 0 ? "near copy" : "words in titles and names", left);
  }
  return parts;
}

void explainByMeaning(quorvex_result& result) {
  for (quorvex_hit& hit : result.hits)
    hit.parts.push_back({.name = meaningName, .value = hit.score});
  result.explanation.texts.emplace_back(byMeaningAlone);
}

}  // namespace quorvex::reader
