#include "search/search_arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "common/format.h"

namespace quorvex {

namespace {

/// From 1 to mostHits.
std::optional<std::size_t> countIn(std::string_view value) {
  std::size_t count = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), count);
  const bool isCount =
      error == std::errc() && end == value.data() + value.size() && count > 0 && count <= mostHits;
  return isCount ? std::optional(count) : std::nullopt;
}

bool setCount(SearchArguments& arguments, std::string_view value) {
  const std::optional<std::size_t> count = countIn(value);
  if (count) arguments.options.count = *count;
  return count.has_value();
}

bool setOpen(SearchArguments& arguments, std::string_view value) {
  arguments.open = value.empty() ? 1 : countIn(value);
  return arguments.open.has_value();
}

template <auto Member>
bool set(SearchArguments& arguments, std::string_view value) {
  arguments.*Member = std::string(value);
  return !value.empty();
}

template <auto Member>
bool add(SearchArguments& arguments, std::string_view value) {
  (arguments.*Member).emplace_back(value);
  return !value.empty();
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

using Takes = SearchOption::Takes;

constexpr std::array<SearchOption, 16> options = {{
    {"--help", "-h", Takes::nothing, "print the help",
     [](SearchArguments& arguments, std::string_view) { return arguments.help = true; }},
    {"--version", "", Takes::nothing, "print the version",
     [](SearchArguments& arguments, std::string_view) { return arguments.version = true; }},
    {"--json", "", Takes::nothing, "write one JSON object per line",
     [](SearchArguments& arguments, std::string_view) { return arguments.json = true; }},
    {"--count", "-n", Takes::value, "list at most this many pages", setCount},
    {"--book", "", Takes::value, "quote the pages of this folder or description file",
     add<&SearchArguments::books>},
    {"--index", "", Takes::value, "search this index file, too", add<&SearchArguments::indexes>},
    {"--open", "", Takes::optionalValue, "open this hit in the browser", setOpen},
    {"--prefix", "", Takes::nothing, "the last word is still being typed",
     [](SearchArguments& arguments, std::string_view) {
       return arguments.options.lastWordIsPrefix = true;
     }},
    {"--language", "", Takes::value, "match inflections as in this language", setLanguage},
    {"--full-text", "", Takes::nothing, "rank by words alone",
     [](SearchArguments& arguments, std::string_view) {
       return addRanking(arguments, Ranking::fullText);
     }},
    {"--semantic", "", Takes::nothing, "rank by meaning alone",
     [](SearchArguments& arguments, std::string_view) {
       return addRanking(arguments, Ranking::semantic);
     }},
    {"--explain", "", Takes::nothing, "tell where the scores come from",
     [](SearchArguments& arguments, std::string_view) {
       return arguments.options.explained = true;
     }},
    {"--names", "", Takes::value, "list the defined names that begin with this text",
     set<&SearchArguments::names>},
    {"--anchor", "", Takes::value, "list the pages that contain this anchor",
     [](SearchArguments& arguments, std::string_view value) {
       arguments.anchor = value;
       return true;
     }},
    {"--related", "", Takes::value, "list the pages nearest in meaning to this one",
     [](SearchArguments& arguments, std::string_view value) {
       arguments.related = value;
       return true;
     }},
    {"--clear-cache", "", Takes::nothing, "remove the indexes that are kept for the user",
     [](SearchArguments& arguments, std::string_view) { return arguments.clearCache = true; }},
}};

const SearchOption* optionNamed(std::string_view name) {
  const auto* const found = std::ranges::find_if(options, [&](const SearchOption& option) {
    return name == option.name || (!option.shortName.empty() && name == option.shortName);
  });
  return found == options.end() ? nullptr : found;
}

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

  /// Behind the first operand stand the words of the question, whatever they begin with. Only a
  /// word that is an option here is doubtful.
  bool isOption(std::string_view argument) const {
    if (_onlyWords || argument.size() < 2 || argument.front() != '-') return false;
    return !_hasOperand || optionNamed(nameIn(argument)) != nullptr;
  }

  /// "--name", "--name=value", "-n", "-nvalue"
  std::string_view nameIn(std::string_view argument) const {
    if (argument.starts_with("--")) return argument.substr(0, argument.find('='));
    // "-nature" is a word to exclude, "-n5" is none.
    const bool isCount =
        argument.size() > 2 && argument.find_first_not_of("0123456789", 2) == argument.npos;
    return _hasOperand && !isCount ? argument : argument.substr(0, 2);
  }

  /// "--name", "--name value", "--name=value", "-n value", "-nvalue"
  Status takeOption(std::string_view argument) {
    const std::string_view name = nameIn(argument);
    const SearchOption* option = optionNamed(name);
    if (option == nullptr) return Error{formatText("Unknown option: %@", {argument})};
    if (_hasOperand) {
      return Error{formatText(
          "The option %@ goes before the index and the words; as a word to search for, it "
          "needs \"--\" before it",
          {name})};
    }
    std::optional<std::string_view> value;
    if (argument.size() > name.size()) {
      value = argument.substr(name.size() + (argument.starts_with("--") ? 1 : 0));
    }
    if (value && option->takes == Takes::nothing) {
      return Error{formatText("%@ takes no value", {name})};
    }
    if (!value && option->takes == Takes::value) {
      if (_rest.empty()) return Error{formatText("%@ needs a value", {name})};
      value = take();
    }
    if (option->apply(_arguments, value.value_or(std::string_view()))) return okStatus();
    return Error{formatText("Invalid value for %@: %@", {name, value.value_or("")})};
  }

  void addOperand(std::string_view operand) {
    if (_arguments.indexes.empty()) {
      _arguments.indexes.emplace_back(operand);
    } else {
      if (_hasWords) _arguments.query += ' ';
      _arguments.query += operand;
      _hasWords = true;
    }
    _hasOperand = true;
  }

  Status check() const {
    if (_arguments.help || _arguments.version) return okStatus();
    if (_arguments.clearCache) {
      return _hasOperand ? Status(Error{"--clear-cache takes no index and no words"}) : okStatus();
    }
    if (_arguments.indexes.empty()) return Error{"No index file"};
    const int others =
        (_arguments.anchor ? 1 : 0) + (_arguments.related ? 1 : 0) + (_arguments.names ? 1 : 0);
    if (others > 1) return Error{"Only one of --anchor, --names and --related"};
    if (_hasWords && others > 0) {
      return Error{"Words cannot be combined with --anchor, --names or --related"};
    }
    if (!_hasWords && others == 0) return Error{"No words to search for"};
    if (!_arguments.books.empty() && _arguments.books.size() != _arguments.indexes.size()) {
      return Error{"--book is needed once for each index, in the same order"};
    }
    if (_arguments.related && _arguments.indexes.size() > 1) {
      return Error{"--related needs a single index, that of its page"};
    }
    if (_arguments.open && _arguments.books.empty())
      return Error{"--open needs the book's folder: --book"};
    if (_arguments.open && _arguments.anchor)
      return Error{"--open cannot be combined with --anchor"};
    return okStatus();
  }

  std::span<char* const> _rest;
  SearchArguments _arguments;
  bool _onlyWords = false;  ///< after "--"
  bool _hasOperand = false;
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
