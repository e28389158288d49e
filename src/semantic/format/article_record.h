#pragma once

#include <string>
#include <vector>

namespace quorvex::docuvault {

/// The part of an article that the index stores.
struct ArticleRecord {
  struct Action {
    std::string name;
    std::string link;
  };
  std::string subPath;
  std::string title;
  std::string description;
  std::vector<std::string> keywords;
  std::vector<Action> actions;
  bool excludedFromSearch = false;
};

}  // namespace quorvex::docuvault
