#include "tests/reader/python_questions.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

#include "cli/index_container.h"
#include "generate/index_file_generator.h"
#include "quorvex/help_index.h"
#include "sources/indexable_directory.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

constexpr const char* book = "/usr/share/doc/python3/html";

std::string indexedBook(const test::TemporaryFolder& folder) {
  const auto source = std::make_shared<QXIndexableDirectory>(*URL::fileURL(book));
  const auto generator = std::make_shared<QXIndexFileGenerator>(source);
  generator->setOutputIndexTypes(semanticIndex | fullTextIndex);
  generator->setIndexLocale(Locale::withIdentifier("en_US"));
  const std::string path = (folder.path() / "index").string();
  EXPECT_TRUE(writeIndexFile(generator->generateIndex(), path, IndexFormat::lsm));
  return path;
}

TEST(PythonQuestions, MostAreAnsweredByTheFirstPage) {
  if (!std::filesystem::exists(book)) GTEST_SKIP() << book << " is not installed";
  const test::TemporaryFolder folder;
  const auto index = HelpIndex::open(indexedBook(folder));
  ASSERT_TRUE(index);
  std::size_t answered = 0;
  for (const test::Question& question : test::pythonQuestions) {
    const auto result = index->search(question.text, {.isPlainText = true});
    ASSERT_TRUE(result);
    const auto hit = std::ranges::find_if(result->hits, [&](const Hit& candidate) {
      return std::ranges::count(question.pages, candidate.page.path) > 0;
    });
    if (hit == result->hits.begin()) ++answered;
    std::cout << hit - result->hits.begin() + 1 << "  " << question.text << '\n';
  }
  EXPECT_GE(answered, 16U);
}

}  // namespace
}  // namespace quorvex
