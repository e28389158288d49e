#include "search/search_arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "common/format.h"

namespace quorvex {

namespace {

bool setCount(SearchArguments& arguments, std::string_view value) {
  std::size_t count = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), count);
  arguments.options.count = count;
  return error == std::errc() && end == value.data() + value.size() && count > 0 &&
         count <= mostHits;
}

bool setLanguage(SearchArguments& arguments, std::string_view value) {
  arguments.options.language = value;
  return !value.empty();
}

// Both options together are the default: both rankings.
bool addRanking(SearchArguments& arguments, Ranking ranking) {
  Ranking& current = arguments.options.ranking;
  current = current == Ranking::best || current == ranking ? ranking : Ranking::best;
  return true;
}

constexpr std::array<SearchOption, 9> options = {{
    {"--help", "-h", false, "print the help",
     [](SearchArguments& arguments, std::string_view) { return arguments.help = true; }},
    {"--json", "", false, "write one JSON object per line",
     [](SearchArguments& arguments, std::string_view) { return arguments.json = true; }},
    {"--count", "-n", true, "list at most this many pages", setCount},
    {"--prefix", "", false, "the last word is still being typed",
     [](SearchArguments& arguments, std::string_view) {
       return arguments.options.lastWordIsPrefix = true;
     }},
    {"--language", "", true, "match inflections as in this language", setLanguage},
    {"--full-text", "", false, "rank by words alone",
     [](SearchArguments& arguments, std::string_view) {
       return addRanking(arguments, Ranking::fullText);
     }},
    {"--semantic", "", false, "rank by meaning alone",
     [](SearchArguments& arguments, std::string_view) {
       return addRanking(arguments, Ranking::semantic);
     }},
    {"--anchor", "", true, "list the pages that contain this anchor",
     [](SearchArguments& arguments, std::string_view value) {
       arguments.anchor = value;
       return true;
     }},
    {"--related", "", true, "list the pages nearest in meaning to this one",
     [](SearchArguments& arguments, std::string_view value) {
       arguments.related = value;
       return true;
     }},
}};

class Parser {
 public:
  explicit Parser(std::span<char* const> arguments) : _rest(arguments) {}

  Result<SearchArguments> parse() {
    while (!_rest.empty()) {
      const std::string_view argument = take();
      if (!_onlyWords && argument == "--") {
        _onlyWords = true;
      } else if (isOption(argument)) {
        if (const Status taken = takeOption(argument); !taken) return taken.error();
      } else {
        addOperand(argument);
      }
    }
    if (const Status sound = check(); !sound) return sound.error();
    return std::move(_arguments);
  }

 private:
  std::string_view take() {
    const std::string_view argument = _rest.front();
    _rest = _rest.subspan(1);
    return argument;
  }

  /// After the index, a single hyphen excludes a word.
  bool isOption(std::string_view argument) const {
    if (_onlyWords || argument.size() < 2 || argument.front() != '-') return false;
    return !_hasIndex || argument.starts_with("--");
  }

  /// "--name", "--name value", "--name=value", "-n value", "-nvalue"
  Status takeOption(std::string_view argument) {
    const bool isLong = argument.starts_with("--");
    const std::size_t nameSize =
        isLong ? std::min(argument.find('='), argument.size()) : std::size_t{2};
    const std::string_view name = argument.substr(0, nameSize);
    for (const SearchOption& option : options) {
      if (name != option.name && name != option.shortName) continue;
      std::optional<std::string_view> value;
      if (argument.size() > nameSize) value = argument.substr(nameSize + (isLong ? 1 : 0));
      if (value && !option.takesValue) return Error{formatText("%@ takes no value", {name})};
      if (!value && option.takesValue) {
        if (_rest.empty()) return Error{formatText("%@ needs a value", {name})};
        value = take();
      }
      if (option.apply(_arguments, value.value_or(std::string_view()))) return okStatus();
      return Error{formatText("Invalid value for %@: %@", {name, *value})};
    }
    return Error{formatText("Unknown option: %@", {argument})};
  }

  void addOperand(std::string_view operand) {
    if (!_hasIndex) {
      _arguments.index = operand;
    } else {
      if (_hasWords) _arguments.query += ' ';
      _arguments.query += operand;
      _hasWords = true;
    }
    _hasIndex = true;
  }

  Status check() const {
    if (_arguments.help) return okStatus();
    if (!_hasIndex) return Error{"No index file"};
    const bool asksOtherwise = _arguments.anchor || _arguments.related;
    if (_arguments.anchor && _arguments.related) return Error{"Both --anchor and --related"};
    if (_hasWords && asksOtherwise)
      return Error{"Words cannot be combined with --anchor or --related"};
    if (!_hasWords && !asksOtherwise) return Error{"No words to search for"};
    return okStatus();
  }

  std::span<char* const> _rest;
  SearchArguments _arguments;
  bool _onlyWords = false;  ///< after "--"
  bool _hasIndex = false;
  bool _hasWords = false;
};

}  // namespace

std::span<const SearchOption> searchOptions() {
  return options;
}

Result<SearchArguments> parseSearchArguments(std::span<char* const> arguments) {
  return Parser(arguments).parse();
}

}  // namespace quorvex
