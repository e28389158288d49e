#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "semantic/format/term_weights.h"
#include "tests/semantic/books.h"

namespace quorvex {
namespace {

using test::indexOf;
using test::listed;
using test::Page;
using test::smallBook;
using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(SemanticIndex, AnswersByMeaning) {
  const auto index = indexOf(smallBook());
  struct {
    const char* question;
    std::size_t count;
    const char* answers;
  } cases[] = {
      {"galaxies", 1, "star1"},
      {"GALAXY", 1, "star1"},  // folded and stemmed
      {"sourdough bread", 2, "bread2 bread1"},
      {"zeppelin", 5, ""},
      {"", 5, ""},
      {"...", 5, ""},
      {"telescope", 0, ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(listed(index->articlesNearestToText(c.question, c.count)), c.answers) << c.question;
  }
}

TEST(SemanticIndex, NeitherLongPagesNorLongQuestionsGetMore) {
  std::vector<Page> pages = smallBook();
  pages.push_back({"short", "", "zebra"});
  pages.push_back({"long", "", "zebra zebra"});
  for (int i = 0; i < 200; ++i)
    pages.back().content += " word" + std::to_string(i);
  const auto index = indexOf(pages);
  const auto answers = index->articlesNearestToText("zebra", 2);
  EXPECT_EQ(listed(answers), "short long");
  EXPECT_NEAR(index->articlesNearestToText("zebra zebra zebra", 1).front().similarity,
              answers.front().similarity, 1e-6);
}

TEST(SemanticIndex, FindsPagesThatShareNoWordWithTheQuestion) {
  const auto index = indexOf(smallBook());
  EXPECT_THAT(listed(index->articlesNearestToText("automobile", 4)),
              AllOf(StartsWith("auto"), HasSubstr("car1"), HasSubstr("car2")));
  EXPECT_THAT(listed(index->articlesNearestToArticle("car1", 3)),
              AllOf(HasSubstr("car2"), HasSubstr("auto1"), HasSubstr("auto2")));
  EXPECT_THAT(listed(index->articlesNearestToArticle("cake", 2)),
              AnyOf("bread1 bread2", "bread2 bread1"));
  EXPECT_EQ(listed(index->articlesNearestToArticle("no such page", 5)), "");
}

TEST(SemanticIndex, LeavesOutExcludedPagesAndOrdersTiesBySubPath) {
  std::vector<Page> pages = smallBook();
  for (const char* name : {"zz", "b", "a"})
    pages.push_back({name, "Comets", "A comet has a tail."});
  pages.push_back({"hidden", "Comets", "A comet has a tail.", true});
  const auto index = indexOf(pages);
  EXPECT_EQ(listed(index->articlesNearestToText("comet", 3)), "a b zz");
  EXPECT_EQ(listed(index->articlesNearestToArticle("a", 2)), "b zz");
  EXPECT_THAT(listed(index->articlesNearestToText("comet", 100)), Not(HasSubstr("hidden")));
}

TEST(SemanticIndex, CountsTitlesAndKeywordsForMore) {
  HelpRDXIndexBuilder builder(std::nullopt, "en");
  const auto add = [&](const char* subPath, const Dictionary& properties) {
    builder.addHelpArticleWithProperties(properties, subPath);
  };
  add("content", {{std::string(HelpDocPropertyContent), "printer paper tray"}});
  add("title", {{std::string(HelpDocPropertyTitle), "printer"},
                {std::string(HelpDocPropertyContent), "paper tray"}});
  add("keyword", {{std::string(HelpDocPropertyKeywords), Array{"tray", 7}},
                  {std::string(HelpDocPropertyContent), "printer paper"}});
  add("other", {{std::string(HelpDocPropertyContent), "screen mouse window"}});
  const auto index = builder.index();
  EXPECT_EQ(listed(index->articlesNearestToText("printer", 1)), "title");
  EXPECT_EQ(listed(index->articlesNearestToText("tray", 1)), "keyword");
}

TEST(SemanticIndex, HasTheSameBytesForEveryNumberOfWorkers) {
  std::vector<Page> pages;
  for (int i = 0; i < 300; ++i) {
    Page page{"p" + std::to_string(i), "Page " + std::to_string(i % 7), ""};
    for (int j = 0; j < 40 + i % 50; ++j) {
      page.content += " w" + std::to_string((i * 31 + j * j * 7) % (50 + i));
    }
    pages.push_back(page);
  }
  const Data expected = indexOf(pages)->versionedRDXIndexData();
  for (const unsigned workers : {2U, 3U, 7U}) {
    EXPECT_EQ(indexOf(pages, workers)->versionedRDXIndexData(), expected) << workers;
  }
  HelpRDXIndexBuilder builder(std::nullopt, "en_US");
  for (const Page& page : pages) {
    builder.addHelpArticleWithProperties(test::article(page).properties, page.subPath);
    if (page.subPath == "p100") builder.index();  // a later addition recomputes it
  }
  EXPECT_EQ(builder.index()->versionedRDXIndexData(), expected);
}

std::vector<Page> copies(std::size_t count, const Page& page) {
  std::vector<Page> pages(count, page);
  for (std::size_t i = 0; i < count; ++i)
    pages[i].subPath = "p" + std::to_string(i);
  return pages;
}

TEST(SemanticIndex, WithstandsOddBooks) {
  const std::vector<Page> languages = {
      {"en", "Files", "open the file and save it"},
      {"de", "Dateien", "Öffnen Sie die Datei und sichern Sie sie"},
      {"fr", "Fichiers", "ouvrez le fichier et enregistrez"},
      {"ru", "Файлы", "откройте файл и сохраните его"},
      {"el", "Αρχεία", "ανοίξτε το αρχείο"},
      {"ar", "ملفات", "افتح الملف ثم احفظه"},
      {"ja", "ファイル", "ファイルを開いて保存します"},
      {"zh", "文件", "打开文件并保存"},
      {"th", "ไฟล์", "เปิดไฟล์แล้วบันทึก"},
      {"ko", "파일", "파일을 열고 저장합니다"},
  };
  struct {
    const char* name;
    std::vector<Page> pages;
    const char* question;
    bool answered;
  } cases[] = {
      {"none", {}, "file", false},
      {"one", {{"a", "File", "open the file"}}, "file", true},
      {"two", {{"a", "File", "open it"}, {"b", "Edit", "copy it"}}, "copy", true},
      {"identical", copies(100, {"", "File", "open the file"}), "file", true},
      {"empty", copies(20, {}), "file", false},
      {"one word", copies(20, {"", "", "file"}), "file", true},
      {"languages", languages, "保存", true},
      {"not UTF-8",
       {{"a", "\xff\xfe", "file \xc3"}, {"b", "", std::string(3, '\0')}},
       "file",
       true},
      {"long words", copies(3, {"", std::string(100'000, 'x'), "y"}), "xxx", false},
  };
  for (const auto& c : cases) {
    for (const char* language : {"en", "ja", "tlh", "", "not a locale"}) {
      const auto built = indexOf(c.pages, 2, language);
      ASSERT_NE(built, nullptr) << c.name;
      const auto index =
          HelpRDXIndex::HelpRDXIndexWithVersionedData(built->versionedRDXIndexData());
      ASSERT_NE(index, nullptr) << c.name;
      const auto answers = index->articlesNearestToText(c.question, 1000);
      EXPECT_EQ(!answers.empty(), c.answered) << c.name << ' ' << language;
      for (const Page& page : c.pages) {
        for (const auto& answer : index->articlesNearestToArticle(page.subPath, 1000)) {
          EXPECT_TRUE(answer.similarity > 0 && answer.similarity <= 1) << c.name;
        }
      }
    }
  }
}

TEST(TermWeights, CountsFallBackToTheNextKnownOne) {
  for (std::uint32_t code = 0; code < docuvault::countOfCode.size(); ++code) {
    EXPECT_EQ(docuvault::codeOfCount(docuvault::countOfCode[code]), code);
    EXPECT_EQ(docuvault::codeOfCount(docuvault::countOfCode[code] - (code > 0 ? 1 : 0)),
              code > 0 ? code - 1 : 0);
  }
  EXPECT_EQ(docuvault::codeOfCount(~0U), 15U);
}

}  // namespace
}  // namespace quorvex
