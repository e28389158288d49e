#pragma once

#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/index_container.h"
#include "generate/index_file_generator.h"
#include "quorvex/quorvex.h"
#include "sources/indexable_directory.h"
#include "tests/support/temporary_folder.h"

namespace quorvex::test {

inline constexpr std::array<const char*, 3> subjects = {
    "The pump moves water through the pipes of the house and needs oil once a year.",
    "Bake the bread in a hot oven until the crust of the loaf is brown and crisp.",
    "The lamp in the hall burns all night; replace its bulb when the light fades."};

inline std::string pageOf(std::size_t i) {
  return "<title>Page " + std::to_string(i) +
         "</title><meta name=description content='On subject " + std::to_string(i % 3) +
         "'><body><a name=start></a><a name=only" + std::to_string(i) + "></a>" + subjects[i % 3] +
         " Number" + std::to_string(i) + " of the pages tells of it.";
}

inline Dictionary indexed(std::uint64_t types, const std::vector<std::string>& pages) {
  const TemporaryFolder folder;
  for (std::size_t i = 0; i < pages.size(); ++i)
    folder.write("en.lproj/sub/p" + std::to_string(i) + ".html", pages[i]);
  const auto source = std::make_shared<QXIndexableDirectory>(*URL::fileURL(folder.path().string()));
  IndexSettings settings;
  settings.outputIndexTypes = types;
  settings.indexLocale = Locale::withIdentifier("en_US");
  return *std::make_shared<QXIndexFileGenerator>(source, settings)->generateIndex();
}

inline Dictionary indexed(std::uint64_t types, std::size_t count = 12) {
  std::vector<std::string> pages;
  for (std::size_t i = 0; i < count; ++i)
    pages.push_back(pageOf(i));
  return indexed(types, pages);
}

inline std::string fileOf(const Dictionary& index, IndexFormat format = IndexFormat::lsm) {
  const TemporaryFolder folder;
  const std::string path = (folder.path() / "index").string();
  EXPECT_TRUE(writeIndexFile(index, path, format));
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

/// A book of 12 pages on 3 subjects, in both forms.
inline const std::string& bookFile() {
  static const std::string file = fileOf(indexed(semanticIndex | fullTextIndex));
  return file;
}

/// A text with its [matches] in brackets.
inline std::string marked(std::string text, const std::vector<quorvex_range>& matches) {
  for (std::size_t i = matches.size(); i-- > 0;)
    text.insert(matches[i].end, "]").insert(matches[i].begin, "[");
  return text;
}

}  // namespace quorvex::test
