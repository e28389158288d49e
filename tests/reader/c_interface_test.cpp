#include <functional>

#include <gtest/gtest.h>

#include "quorvex/help_index.h"
#include "quorvex/quorvex.h"
#include "tests/reader/book.h"

namespace quorvex {
namespace {

using namespace std::string_view_literals;
using detail::Owned;

Owned<quorvex_index> opened() {
  quorvex_index* index = nullptr;
  const std::string& file = test::bookFile();
  EXPECT_EQ(quorvex_index_open_bytes(file.data(), file.size(), &index, nullptr), QUORVEX_OK);
  return Owned<quorvex_index>(index);
}

/// What a call must overwrite.
template <typename Handle>
Handle* garbage() {
  return reinterpret_cast<Handle*>(1);
}

/// A code and its message.
std::string told(const std::function<quorvex_code(quorvex_error**)>& call) {
  auto* error = garbage<quorvex_error>();
  const quorvex_code code = call(&error);
  const Owned<quorvex_error> owned(error);
  EXPECT_EQ(quorvex_error_code(error), code);
  return std::to_string(code) + " " + quorvex_error_message(error, nullptr);
}

TEST(CInterface, RefusesWrongArguments) {
  const auto index = opened();
  const Owned<quorvex_options> options(quorvex_options_new());
  auto* none = garbage<quorvex_index>();
  auto* page = garbage<quorvex_page>();
  auto* paths = garbage<quorvex_list>();
  auto* result = garbage<quorvex_result>();
  auto* matches = garbage<quorvex_matches>();
  auto* path = garbage<char>();
  using Error = quorvex_error**;
  const auto language = [&](std::string_view name) {
    return [&options, name](Error e) {
      return quorvex_options_set_language(options.get(), name.data(), name.size(), e);
    };
  };
  const auto joined = [&](std::string_view folder, std::string_view name) {
    return [&path, folder, name](Error e) {
      return quorvex_join_page_path(folder.data(), folder.size(), name.data(), name.size(), &path,
                                    e);
    };
  };
  const std::vector<std::pair<std::string, std::function<quorvex_code(Error)>>> cases = {
      {"1 There is a zero byte in the path",
       [&](Error e) { return quorvex_index_open("a\0b", 3, &none, e); }},
      {"1 The path is empty", [&](Error e) { return quorvex_index_open("", 0, &none, e); }},
      {"1 No path", [&](Error e) { return quorvex_index_open(nullptr, 1, &none, e); }},
      {"1 There is no place for the result",
       [](Error e) { return quorvex_index_open("a", 1, nullptr, e); }},
      {"3 \xEF\xBF\xBD: No such file or directory",
       [&](Error e) { return quorvex_index_open("\xFF", 1, &none, e); }},
      {"1 The length is out of range: bytes",
       [&](Error e) { return quorvex_index_open_bytes("a", SIZE_MAX, &none, e); }},
      {"1 No index", [&](Error e) { return quorvex_index_page(nullptr, 0, &page, e); }},
      {"1 The index has fewer pages",
       [&](Error e) { return quorvex_index_page(index.get(), 12, &page, e); }},
      {"1 No index",
       [&](Error e) { return quorvex_index_pages_with_anchor(nullptr, "a", 1, &paths, e); }},
      {"1 No index",
       [&](Error e) { return quorvex_index_search(nullptr, "a", 1, nullptr, &result, e); }},
      {"1 No query",
       [&](Error e) { return quorvex_index_search(index.get(), nullptr, 1, nullptr, &result, e); }},
      {"1 No index",
       [&](Error e) {
         const quorvex_index* indexes[] = {index.get(), nullptr};
         return quorvex_search_indexes(indexes, 2, "a", 1, nullptr, &result, e);
       }},
      {"1 No indexes",
       [&](Error e) { return quorvex_search_indexes(nullptr, 1, "a", 1, nullptr, &result, e); }},
      {"1 No index",
       [&](Error e) { return quorvex_index_related(nullptr, "/a", 2, nullptr, &result, e); }},
      {"1 No index",
       [&](Error e) { return quorvex_index_names(nullptr, "a", 1, nullptr, &result, e); }},
      {"1 No index",
       [&](Error e) { return quorvex_index_match(nullptr, "a", 1, "a", 1, nullptr, &matches, e); }},
      {"1 No text",
       [&](Error e) {
         return quorvex_index_match(index.get(), "a", 1, nullptr, 1, nullptr, &matches, e);
       }},
      {"1 No index", [&](Error e) { return quorvex_index_with_book(nullptr, "a", 1, &none, e); }},
      {"1 The path of the book is empty",
       [&](Error e) { return quorvex_index_with_book(index.get(), "", 0, &none, e); }},
      {"3 /nonesuch: No such file or directory",
       [&](Error e) { return quorvex_index_with_book(index.get(), "/nonesuch", 9, &none, e); }},
      {"1 No options", [](Error e) { return quorvex_options_set_count(nullptr, 1, e); }},
      {"1 There is no such ranking",
       [&](Error e) {
         return quorvex_options_set_ranking(options.get(), static_cast<quorvex_ranking>(3), e);
       }},
      {"6 Unknown language: klingon", language("klingon")},
      {"6 Unknown language: \xEF\xBF\xBD", language("\xFF")},
      {"6 Unknown language: xx", language("xx")},
      {"0 ", language("de_CH.UTF-8")},
      {"0 ", language("C.UTF-8")},
      {"0 ", language("und-Latn")},
      {"0 ", language("")},
      {"1 There is a zero byte in the folder", joined("a\0b"sv, "/a.html")},
      {"7 The path cannot be one of a page", joined("/book", "/../a.html")},
      {"1 There is no place for the result",
       [](Error e) { return quorvex_join_page_path("a", 1, "b", 1, nullptr, e); }},
  };
  for (const auto& [expected, call] : cases) {
    EXPECT_EQ(told(call), expected);
    EXPECT_EQ(std::to_string(call(nullptr)), expected.substr(0, 1));
  }
  EXPECT_TRUE(none == nullptr && page == nullptr && paths == nullptr && result == nullptr &&
              matches == nullptr && path == nullptr);
}

TEST(CInterface, TakesNullForAnEmptyHandle) {
  std::size_t length = 1;
  const auto isNothing = [&](const void* returned) {
    return returned == nullptr && std::exchange(length, 1) == 0;
  };
  const auto isEmpty = [&](const char* text) {
    return *text == '\0' && std::exchange(length, 1) == 0;
  };
  EXPECT_TRUE(isEmpty(quorvex_error_message(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_index_language(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_index_remote_root(nullptr, &length)));
  EXPECT_TRUE(isEmpty(quorvex_page_title(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_list_at(nullptr, 0, &length)));
  EXPECT_TRUE(isNothing(quorvex_result_suggestion(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_result_searched(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_hit_part_name(nullptr, 0, &length)));
  EXPECT_EQ(quorvex_result_explanation(nullptr), nullptr);
  EXPECT_EQ(quorvex_hit_part_value(nullptr, 0), 0);
  EXPECT_TRUE(isNothing(quorvex_hit_title_matches(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_matches_ranges(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_hit_name(nullptr, &length)));
  EXPECT_TRUE(isEmpty(quorvex_place_fragment(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_place_snippet(nullptr, &length)));
  EXPECT_TRUE(isNothing(quorvex_place_snippet_matches(nullptr, &length)));
  EXPECT_EQ(quorvex_hit_place(nullptr, 0), nullptr);
  EXPECT_EQ(quorvex_place_headings(nullptr), nullptr);
  EXPECT_EQ(quorvex_result_hit(nullptr, 0), nullptr);
  EXPECT_EQ(quorvex_hit_page(nullptr), nullptr);
  EXPECT_EQ(quorvex_error_code(nullptr), QUORVEX_OK);
  EXPECT_EQ(quorvex_index_format(nullptr) + quorvex_hit_score(nullptr), 0);
  EXPECT_EQ(quorvex_index_page_count(nullptr) + quorvex_result_hit_count(nullptr), 0U);
  EXPECT_EQ(quorvex_result_state(nullptr), QUORVEX_STATE_NO_WORDS);
  quorvex_index_close(nullptr);
  quorvex_error_free(nullptr);
}

TEST(CInterface, HitsOutliveTheirIndex) {
  auto index = opened();
  quorvex_result* made = nullptr;
  ASSERT_EQ(quorvex_index_search(index.get(), "number4", 7, nullptr, &made, nullptr), QUORVEX_OK);
  const Owned<quorvex_result> result(made);
  index = nullptr;
  EXPECT_EQ(quorvex_result_hit(made, quorvex_result_hit_count(made)), nullptr);
  const quorvex_page* page = quorvex_hit_page(quorvex_result_hit(made, 0));
  EXPECT_STREQ(quorvex_page_title(page, nullptr), "Page 4");
}

TEST(CInterface, TellsOfDamageThatShowsLater) {
  Dictionary root = test::indexed(semanticIndex | fullTextIndex);
  for (int i = 0; i < 50'000; ++i)
    root.at("TSI_ANCHOR_DATA").dictionary()->emplace("anchor" + std::to_string(i), Array{"/p"});
  const test::TemporaryFolder folder;
  std::string file = test::fileOf(root);
  folder.write("index", file);
  const std::string path = (folder.path() / "index").string();
  quorvex_index* open = nullptr;
  ASSERT_EQ(quorvex_index_open(path.data(), path.size(), &open, nullptr), QUORVEX_OK);
  const Owned<quorvex_index> index(open);
  folder.write("index", file.replace(file.size() / 2, 1000, 1000, 'x'));
  quorvex_list* pages = nullptr;
  EXPECT_EQ(told([&](quorvex_error** error) {
              return quorvex_index_pages_with_anchor(open, "start", 5, &pages, error);
            }),
            "4 The index is damaged");
  EXPECT_EQ(pages, nullptr);
}

}  // namespace
}  // namespace quorvex
