#include "search/hit_json.h"

#include <cstdint>

#include "common/json.h"
#include "common/unicode.h"
#include "common/url.h"
#include "search/hit_text.h"

namespace quorvex {

namespace {

void appendJsonBook(std::string& out, const Hit& hit, std::string_view book) {
  if (book.empty()) return;
  out += ",\"index\":" + std::to_string(hit.index + 1);
  appendJsonMember(out, "book", book);
}

/// Appends the ranges of a text in code points and in bytes.
void appendJsonRanges(std::string& out, std::string_view name, std::string_view text,
                      const std::vector<TextRange>& ranges) {
  out.append(",\"").append(name).append("\":[");
  std::size_t position = 0;
  std::size_t characters = 0;
  const auto charactersAt = [&](std::size_t byte) {
    for (; position < byte && position < text.size(); ++characters)
      nextCharacter(text, position);
    return characters;
  };
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const auto& [begin, end] = ranges[i];
    if (i > 0) out += ',';
    out += "{\"characters\":[" + std::to_string(charactersAt(begin)) + ',';
    out += std::to_string(charactersAt(end)) + "],\"bytes\":[" + std::to_string(begin) + ',';
    out += std::to_string(end) + "]}";
  }
  out += ']';
}

void appendJsonSnippet(std::string& out, const HelpPlace& place) {
  out += ",\"snippet\":";
  if (!place.snippet) {
    out += "null";
    return;
  }
  out += "{\"text\":";
  appendJsonString(out, *place.snippet);
  appendJsonRanges(out, "matches", *place.snippet, place.snippetMatches);
  out += '}';
}

void appendJsonHeadings(std::string& out, const HelpPlace& place) {
  out += ",\"headings\":[";
  appendJsonStrings(out, place.headings);
  out += ']';
}

void appendJsonPlaces(std::string& out, const std::vector<HelpPlace>& places) {
  out += ",\"places\":[";
  for (std::size_t i = 0; i < places.size(); ++i) {
    const HelpPlace& place = places[i];
    out += i > 0 ? ",{\"fragment\":" : "{\"fragment\":";
    appendJsonString(out, place.fragment);
    out += ",\"score\":" + decimalText(place.score);
    appendJsonHeadings(out, place);
    appendJsonSnippet(out, place);
    out += '}';
  }
  out += ']';
}

void appendJsonParts(std::string& out, const std::vector<ScorePart>& parts) {
  if (parts.empty()) return;
  out += ",\"parts\":[";
  for (std::size_t i = 0; i < parts.size(); ++i) {
    out += i > 0 ? ",{\"name\":" : "{\"name\":";
    appendJsonString(out, parts[i].name);
    out += ",\"value\":" + decimalText(parts[i].value) + '}';
  }
  out += ']';
}

}  // namespace

std::string_view stateName(QueryState state) {
  switch (state) {
    case QueryState::noWords:
      return "noWords";
    case QueryState::onlyStopWords:
      return "onlyStopWords";
    case QueryState::onlyExcluded:
      return "onlyExcluded";
    case QueryState::answered:
      break;
  }
  return "answered";
}

std::string hitAsJson(const Hit& hit, std::size_t number, std::string_view book) {
  const HelpPlace best = hit.places.empty() ? HelpPlace() : hit.places.front();
  std::string out = "{\"rank\":" + std::to_string(number) + ",\"score\":" + decimalText(hit.score);
  appendJsonBook(out, hit, book);
  appendJsonMember(out, "path", hit.page.path);
  appendJsonMember(out, "fragment", best.fragment);
  appendJsonMember(out, "address", percentEncodePath(hit.page.path) + fragmentOf(hit));
  if (hit.name) appendJsonMember(out, "name", *hit.name);
  appendJsonMember(out, "title", hit.page.title);
  appendJsonRanges(out, "titleMatches", hit.page.title, hit.titleMatches);
  appendJsonHeadings(out, best);
  appendJsonMember(out, "description", hit.page.description);
  appendJsonSnippet(out, best);
  appendJsonPlaces(out, hit.places);
  appendJsonParts(out, hit.parts);
  return out += "}\n";
}

std::string resultAsJson(const SearchResult& result, std::span<const IndexContents> books) {
  std::string out = "{\"hits\":" + std::to_string(result.hits.size());
  appendJsonMember(out, "state", stateName(result.state));
  appendJsonOptional(out, "suggestion", result.suggestion);
  appendJsonOptional(out, "searched", result.searched);
  if (!result.explanation.empty()) {
    out += ",\"explanation\":[";
    appendJsonStrings(out, result.explanation);
    out += ']';
  }
  out += books.size() == 1 ? ",\"book\":" : ",\"books\":[";
  for (std::size_t i = 0; i < books.size(); ++i) {
    std::string members;
    appendJsonOptional(members, "title", books[i].title);
    appendJsonOptional(members, "language", books[i].language);
    out.append(i > 0 ? ",{" : "{").append(members, 1).append("}");
  }
  if (books.size() != 1) out += ']';
  return out += "}\n";
}

std::string pathAsJson(const Hit& hit, std::string_view book) {
  std::string out = "{\"path\":";
  appendJsonString(out, hit.page.path);
  appendJsonBook(out, hit, book);
  return out += "}\n";
}

}  // namespace quorvex
