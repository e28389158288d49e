#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "quorvex/quorvex.h"

// What the public header's opaque types hold. They may gain members freely.

struct quorvex_page {
  std::string path;
  std::string firstAnchor;
  std::string title;
  std::string description;
};

struct quorvex_list {
  std::vector<std::string> texts;
};

struct quorvex_matches {
  std::vector<quorvex_range> ranges;
};

struct quorvex_place {
  std::string fragment;
  quorvex_list headings;
  double score = 0;
  std::optional<std::string> snippet;
  std::vector<quorvex_range> snippetMatches;
};

/// A part of a score.
struct quorvex_part {
  std::string name;
  double value = 0;
};

struct quorvex_hit {
  std::size_t index = 0;  ///< of those searched together
  quorvex_page page;
  std::size_t number = 0;  ///< of the page
  std::optional<std::string> name;
  double score = 0;
  std::vector<quorvex_place> places;
  std::vector<quorvex_range> titleMatches;
  std::vector<quorvex_range> descriptionMatches;
  std::vector<quorvex_part> parts;  ///< of the score, if explained
};

struct quorvex_result {
  quorvex_state state = QUORVEX_STATE_NO_WORDS;
  std::vector<quorvex_hit> hits;
  std::optional<std::string> suggestion;
  std::optional<std::string> searched;
  quorvex_list explanation;
};

struct quorvex_options {
  quorvex_ranking ranking = QUORVEX_RANKING_BEST;
  std::size_t count = 10;
  bool lastWordIsPrefix = false;
  bool isPlainText = false;
  bool phrasesAreWords = false;
  bool explained = false;
  std::optional<std::string> language;  ///< subtag; null: that of the index; empty: none
};
