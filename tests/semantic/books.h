#pragma once

#include <string>
#include <vector>

#include "platform/docuvault.h"

namespace quorvex::test {

struct Page {
  std::string subPath;
  std::string title;
  std::string content;
  bool excluded = false;
};

inline HelpArticle article(const Page& page) {
  Dictionary properties;
  if (!page.title.empty()) properties.emplace(HelpDocPropertyTitle, page.title);
  if (!page.content.empty()) properties.emplace(HelpDocPropertyContent, page.content);
  if (page.excluded) properties.emplace(HelpDocPropertyExcludeFromSearch, true);
  return {std::move(properties), page.subPath};
}

inline std::shared_ptr<HelpRDXIndex> indexOf(const std::vector<Page>& pages, unsigned workers = 1,
                                             const std::string& language = "en_US") {
  HelpRDXIndexBuilder builder(std::nullopt, language);
  builder.addHelpArticles(pages.size(), workers, [&](std::size_t i) { return article(pages[i]); });
  return builder.index();
}

/// Returns the sub-paths of the answers, best first, separated by spaces.
inline std::string listed(const std::vector<HelpRDXAnswer>& answers) {
  std::string list;
  for (const HelpRDXAnswer& answer : answers) {
    if (!list.empty()) list += ' ';
    list += answer.subPath;
  }
  return list;
}

/// A book about three subjects; "car" and "automobile" never share a page.
inline std::vector<Page> smallBook() {
  return {
      {"car1", "Driving a car", "The car has an engine, four wheels and brakes. Start the engine."},
      {"car2", "Car repair", "Change the wheels of the car, then check brakes and engine oil."},
      {"auto1", "The automobile", "An automobile needs engine oil; its wheels need brakes."},
      {"auto2", "Automobile engines", "Engine oil and brakes keep the automobile on its wheels."},
      {"bread1", "Baking bread", "Knead flour, water and yeast; bake the dough in the oven."},
      {"bread2", "Sourdough", "The dough of flour and water rests, then the oven bakes the bread."},
      {"cake", "A cake", "Mix flour, eggs and sugar to a dough and bake it in the oven."},
      {"star1", "Stars", "A telescope shows stars, planets and galaxies in the night sky."},
      {"star2", "Planets", "Planets wander among the stars; the telescope follows the sky."},
      {"moon", "The moon", "The moon crosses the night sky; see its craters by telescope."},
  };
}

}  // namespace quorvex::test
