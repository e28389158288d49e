#include "view/http/target.h"

#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace quorvex::view {
namespace {

TEST(Target, NamesAFileOrIsRefused) {
  using Path = std::optional<std::string>;
  const std::vector<std::pair<std::string, Path>> cases = {
      {"", ""},
      {"/", "/"},
      {"/a/b.html", "/a/b.html"},
      {"/a/", "/a/"},
      {"/a%20b%C3%A9.html", "/a b\xC3\xA9.html"},
      {"/%FF", "/\xFF"},
      {"/a%252e%252e/b", "/a%2e%2e/b"},  // decoded once
      {"/...", "/..."},
      {"/a..b", "/a..b"},
      {"/a+b?c", "/a+b?c"},
      {"//", {}},
      {"//host/a", {}},
      {"/a//b", {}},
      {"/a//", {}},
      {"/.", {}},
      {"/..", {}},
      {"..", {}},
      {"/../a", {}},
      {"/a/..", {}},
      {"/a/../", {}},
      {"/a/./b", {}},
      {"/%2e%2E/a", {}},
      {"/.%2e/a", {}},
      {"/a%2fb", {}},
      {"/..%2F..%2Fa", {}},
      {"/a\\b", {}},
      {"/..%5ca", {}},
      {"/a%00b", {}},
      {"/a%0Ab", {}},
      {"/a\x7F", {}},
      {"/a b", {}},
      {"/a%", {}},
      {"/a%2", {}},
      {"/a%zz", {}},
      {"/" + std::string(4095, 'a'), "/" + std::string(4095, 'a')},
      {"/" + std::string(4096, 'a'), {}},
  };
  for (const auto& [raw, path] : cases)
    EXPECT_EQ(decodedPath(raw), path) << raw;
}

TEST(Target, HasParameters) {
  using testing::Pair;
  EXPECT_THAT(parametersOf("q=a+b%2Bc%26&q=d&&x&=y&z==%"),
              testing::ElementsAre(Pair("q", "a b+c&"), Pair("x", ""), Pair("z", "=%")));
}

}  // namespace
}  // namespace quorvex::view
