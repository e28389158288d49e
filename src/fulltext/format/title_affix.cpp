#include "fulltext/format/title_affix.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "common/bytes.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr std::size_t fewestTitles = 5;
/// Candidates are taken from this many titles: whatever most titles share, many of these do.
constexpr std::size_t mostSampled = 256;
/// In bytes.
constexpr std::size_t longestAffix = 256;
constexpr std::size_t mostCandidates = 8;

// A colon needs a blank behind it: "::" is part of names such as "std::vector".
constexpr auto separators = std::to_array<std::string_view>(
    {" - ", " \u2013 ", " \u2014 ", " | ", " \u00B7 ", " \u2022 ", " \u00BB ", " \u00AB ",
     " \u203A ", " \u2039 ", " :: ", ": ", "\u2014\u2014", "\uFF5C", "\uFF1A", "\uFF0D"});

struct Bracket {
  std::string_view before;  ///< how an ending in brackets begins
  std::string_view open;
  std::string_view close;
};
constexpr std::array<Bracket, 2> brackets = {{{" (", "(", ")"}, {"\uFF08", "\uFF08", "\uFF09"}}};

/// A part of a title that others may share.
struct Candidate {
  std::string_view text;
  std::string_view name;  ///< the text without separator and brackets
  std::string_view rest;  ///< of the title
};

/// Without blanks and direction marks at its ends.
std::string_view trimmed(std::string_view text) {
  constexpr auto marks = std::to_array<std::string_view>({"\u200E", "\u200F", "\u061C"});
  const auto isPlain = [](char c) { return c > ' ' && c <= '~'; };
  std::size_t before = 0;
  do {
    if (!text.empty() && isPlain(text.front()) && isPlain(text.back())) return text;
    before = text.size();
    text = trimWhitespace(text);
    for (const std::string_view mark : marks) {
      if (text.starts_with(mark)) text.remove_prefix(mark.size());
      if (text.ends_with(mark)) text.remove_suffix(mark.size());
    }
  } while (text.size() < before);
  return text;
}

/// Whether each bracket is closed, and in one pair of brackets all of them are.
bool areClosed(std::string_view text, bool inOnePair) {
  std::size_t depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i);
    for (const Bracket& bracket : brackets) {
      if (rest.starts_with(bracket.open)) ++depth;
      if (!rest.starts_with(bracket.close)) continue;
      if (depth == 0 || (inOnePair && depth == 1 && rest != bracket.close)) return false;
      --depth;
    }
  }
  return depth == 0;
}

/// The length of the separator at the beginning of a text; 0 if there is none.
std::size_t separatorSize(std::string_view text) {
  // Most bytes begin no separator.
  if (text.front() > ' ' && text.front() <= '~' && text.front() != ':') return 0;
  for (const std::string_view separator : separators) {
    if (text.starts_with(separator)) return separator.size();
  }
  return 0;
}

template <typename Visit>
void forEachEnding(std::string_view title, const Visit& visit) {
  for (std::size_t i = title.size() - std::min(title.size(), longestAffix); i < title.size(); ++i) {
    const std::string_view text = title.substr(i);
    std::string_view name;
    if (const std::size_t size = separatorSize(text); size > 0) {
      if (areClosed(text, false)) name = text.substr(size);
    } else {
      for (const auto& [before, open, close] : brackets) {
        if (!text.starts_with(before) || !text.ends_with(close) || !areClosed(text, true)) continue;
        name = text.substr(before.size(), text.size() - before.size() - close.size());
      }
    }
    if (!name.empty()) visit(Candidate{text, trimmed(name), trimmed(title.substr(0, i))});
  }
}

template <typename Visit>
void forEachBeginning(std::string_view title, const Visit& visit) {
  for (std::size_t i = 0; i < std::min(title.size(), longestAffix); ++i) {
    const std::size_t end = i + separatorSize(title.substr(i));
    const std::string_view name = title.substr(0, i);
    if (end == i || !areClosed(name, false)) continue;
    visit(Candidate{title.substr(0, end), trimmed(name), trimmed(title.substr(end))});
  }
}

struct Ending {
  static bool isOf(std::string_view title, std::string_view text) { return title.ends_with(text); }
  static std::string_view rest(std::string_view title, std::string_view text) {
    return trimmed(title.substr(0, title.size() - text.size()));
  }
  template <typename Visit>
  static void forEach(std::string_view title, const Visit& visit) {
    forEachEnding(title, visit);
  }
};

struct Beginning {
  static bool isOf(std::string_view title, std::string_view text) {
    return title.starts_with(text);
  }
  static std::string_view rest(std::string_view title, std::string_view text) {
    return trimmed(title.substr(text.size()));
  }
  template <typename Visit>
  static void forEach(std::string_view title, const Visit& visit) {
    forEachBeginning(title, visit);
  }
};

struct Shared {
  std::string_view text;
  std::string_view name;
  std::size_t titles = 0;
};

/// Returns what enough of the titles have on one side, longest first.
template <typename Side>
std::vector<Shared> sharedBy(std::span<const std::string_view> titles) {
  struct Seen {
    Candidate first;
    std::size_t count = 0;
    bool restsDiffer = false;
  };
  std::unordered_map<std::string_view, Seen> seen;
  const std::size_t samples = std::min(titles.size(), mostSampled);
  for (std::size_t i = 0; i < samples; ++i) {
    Side::forEach(titles[i * titles.size() / samples], [&](const Candidate& candidate) {
      if (candidate.name.empty() || candidate.rest.empty()) return;
      Seen& found = seen.try_emplace(candidate.text, Seen{candidate}).first->second;
      ++found.count;
      found.restsDiffer = found.restsDiffer || found.first.rest != candidate.rest;
    });
  }
  std::vector<Shared> shared;
  for (const auto& [text, found] : seen) {
    if (found.restsDiffer && 10 * found.count >= 4 * samples)
      shared.push_back({text, found.first.name});
  }
  std::ranges::sort(shared, std::ranges::greater(),
                    [](const Shared& each) { return std::pair(each.text.size(), each.text); });
  if (shared.size() > mostCandidates) shared.resize(mostCandidates);
  std::erase_if(shared, [&](Shared& each) {
    each.titles = static_cast<std::size_t>(std::ranges::count_if(
        titles, [&](std::string_view title) { return Side::isOf(title, each.text); }));
    return each.titles < fewestTitles || 10 * each.titles < 6 * titles.size();
  });
  return shared;
}

}  // namespace

template <typename Side>
std::string_view TitleAffix::without(std::string_view title, const std::vector<Part>& parts) {
  for (const auto& [text, name] : parts) {
    if (title == name) return title;
    if (!Side::isOf(title, text)) continue;
    const std::string_view rest = Side::rest(title, text);
    return rest.empty() ? title : rest;
  }
  return title;
}

TitleAffix::TitleAffix(std::span<const std::string_view> all) {
  std::vector<std::string_view> titles;
  titles.reserve(all.size());
  std::ranges::copy_if(all, std::back_inserter(titles), std::not_fn(&std::string_view::empty));
  std::vector<Shared> shared = sharedBy<Ending>(titles);
  for (const Shared& ending : shared)
    _endings.push_back({std::string(ending.text), std::string(ending.name)});
  for (std::string_view& title : titles)
    title = without<Ending>(title, _endings);
  for (const Shared& beginning : sharedBy<Beginning>(titles)) {
    _beginnings.push_back({std::string(beginning.text), std::string(beginning.name)});
    shared.push_back(beginning);
  }
  if (shared.empty()) return;
  // What nearly as many titles have as any part; of such parts, the one that says the most.
  const std::size_t most = std::ranges::max(shared, {}, &Shared::titles).titles;
  std::erase_if(shared, [&](const Shared& each) { return 10 * each.titles < 9 * most; });
  _name = std::ranges::max(shared, {}, [](const Shared& each) { return each.name.size(); }).name;
}

std::string TitleAffix::encode() const {
  std::string out;
  for (const std::vector<Part>* parts : {&_endings, &_beginnings}) {
    appendVarint(out, parts->size());
    for (const auto& [text, name] : *parts) {
      appendText(out, text);
      appendText(out, name);
    }
  }
  appendText(out, _name);
  return out;
}

std::optional<TitleAffix> TitleAffix::decode(std::string_view bytes) {
  TitleAffix affix;
  ByteReader reader(bytes);
  for (std::vector<Part>* parts : {&affix._endings, &affix._beginnings}) {
    const std::uint64_t count = reader.varint();
    if (count > mostCandidates) return std::nullopt;
    for (std::uint64_t left = count; left > 0; --left) {
      std::string text(reader.text());
      parts->push_back({std::move(text), std::string(reader.text())});
    }
  }
  affix._name = reader.text();
  return reader.ok() ? std::optional(std::move(affix)) : std::nullopt;
}

std::string_view TitleAffix::cut(std::string_view title) const {
  return without<Beginning>(without<Ending>(title, _endings), _beginnings);
}

}  // namespace quorvex
