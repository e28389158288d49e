#include "view/view_site.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>

#include "common/json.h"
#include "common/locale.h"
#include "search/hit_json.h"
#include "view/assets/asset_reply.h"
#include "view/book/page_links.h"
#include "view/book/page_title.h"
#include "view/book/start_page.h"
#include "view/http/target.h"

namespace quorvex::view {

namespace {

using Parameters = std::map<std::string, std::string, std::less<>>;

constexpr std::size_t fewestHits = 1;
constexpr std::size_t usualHits = 20;
constexpr std::size_t mostHits = 100;

std::string valueOf(const Parameters& parameters, std::string_view name) {
  const auto found = parameters.find(name);
  return found == parameters.end() ? std::string() : found->second;
}

std::size_t countOf(const Parameters& parameters) {
  const std::string value = valueOf(parameters, "count");
  std::size_t count = usualHits;
  std::from_chars(value.data(), value.data() + value.size(), count);
  return std::clamp(count, fewestHits, mostHits);
}

Response json(std::string text, unsigned status = 200) {
  return {status, {{"Content-Type", "application/json"}}, std::move(text)};
}

std::string hitsAsJson(const std::vector<Hit>& hits) {
  std::string out = "[";
  for (std::size_t i = 0; i < hits.size(); ++i) {
    if (i > 0) out += ',';
    out += hitAsJson(hits[i], i + 1);
    out.pop_back();  // the line feed
  }
  return out += ']';
}

std::string_view nameOf(IndexState::Phase phase) {
  switch (phase) {
    case IndexState::Phase::opening:
      return "opening";
    case IndexState::Phase::making:
      return "making";
    case IndexState::Phase::failed:
      return "failed";
    case IndexState::Phase::ready:
      break;
  }
  return "ready";
}

const char* truth(bool value) {
  return value ? "true" : "false";
}

/// The user's language, for an index that states none.
std::string languageOfUser() {
  const Locale locale = Locale::current();
  return locale.hasKnownLanguage() ? std::string(locale.language()) : std::string();
}

}  // namespace

Response ViewSite::answer(const Request& request) const {
  const std::string_view path = request.path;
  if (path == "book") return json(bookAsJson());
  if (path == "state") return json(stateAsJson());
  if (path == "search") return search(request);
  if (path == "related") return related(request);
  if (path == "link") return link(request);
  return assetReply(path.empty() ? "index.html" : path, request);
}

std::string ViewSite::bookAsJson() const {
  IndexContents contents;
  const bool isReady = _keeper.state().phase == IndexState::Phase::ready;
  const std::optional<HelpIndex> index = isReady ? _keeper.index() : std::nullopt;
  if (index) contents = index->contents();
  const std::string start = startPageOf(_book.folder);
  std::string out = "{\"start\":";
  appendJsonString(out, start);
  appendJsonMember(out, "title", contents.title ? *contents.title : titleWithoutIndex(start));
  appendJsonOptional(out, "language", contents.language);
  appendJsonMember(out, "origin", _book.origin);
  out.append(",\"network\":").append(truth(_book.allowsNetwork));
  return out + ",\"pages\":" + (index ? std::to_string(contents.pages) : "null") + '}';
}

std::string ViewSite::titleWithoutIndex(const std::string& startPage) const {
  const BookFolder::Found found = _folder->shownAt(startPage).found;
  std::string title;
  if (found.kind == BookFolder::Kind::file) title = titleOfPage(*found.file);
  return title.empty() ? _book.title : title;
}

std::string ViewSite::stateAsJson() const {
  IndexState state = _keeper.state();
  if (state.phase == IndexState::Phase::failed) {
    // Whoever asks may have mended the book; it is looked at again in time.
    static_cast<void>(_keeper.index());
    state = _keeper.state();
  }
  std::string out = "{\"done\":" + std::to_string(state.pagesDone) +
                    ",\"all\":" + std::to_string(state.pagesInAll);
  // As text, since scripts have no numbers of this size.
  appendJsonOptional(
      out, "index", state.identity ? std::optional(std::to_string(*state.identity)) : std::nullopt);
  appendJsonMember(out, "phase", nameOf(state.phase));
  out.append(",\"remaking\":").append(truth(state.isRemaking));
  const bool isSilent = state.message.empty();
  appendJsonOptional(out, "message", isSilent ? std::nullopt : std::optional(state.message));
  return out + '}';
}

Response ViewSite::notReady() const {
  return json(stateAsJson(), 503);
}

Response ViewSite::search(const Request& request) const {
  const std::optional<HelpIndex> index = _keeper.index();
  if (!index) return notReady();
  const Parameters parameters = parametersOf(request.query);
  SearchOptions options;
  options.count = countOf(parameters);
  options.lastWordIsPrefix = valueOf(parameters, "typing") == "1";
  if (!index->contents().language) options.language = languageOfUser();
  Expected<SearchResult> result = index->search(valueOf(parameters, "q"), options);
  if (!result) return json("{\"state\":\"failed\",\"hits\":[]}", 500);
  std::string out = "{\"hits\":" + hitsAsJson(result->hits);
  appendJsonMember(out, "state", stateName(result->state));
  appendJsonOptional(out, "suggestion", result->suggestion);
  appendJsonOptional(out, "searched", result->searched);
  return json(out + '}');
}

Response ViewSite::related(const Request& request) const {
  const std::optional<HelpIndex> index = _keeper.index();
  if (!index) return notReady();
  const Parameters parameters = parametersOf(request.query);
  // An index without a semantic index knows of no relations.
  const auto hits = index->related(valueOf(parameters, "page"), countOf(parameters));
  return json("{\"hits\":" + hitsAsJson(hits ? *hits : std::vector<Hit>()) + '}');
}

Response ViewSite::link(const Request& request) const {
  const Parameters parameters = parametersOf(request.query);
  const BookFolder::Found page = _folder->shownAt(valueOf(parameters, "page")).found;
  const bool isKnown =
      page.kind == BookFolder::Kind::file && holdsLink(*page.file, valueOf(parameters, "href"));
  return json(std::string("{\"known\":") + truth(isKnown) + '}');
}

}  // namespace quorvex::view
