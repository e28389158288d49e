#include "extract/page_parser.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>

#include "common/files.h"
#include "common/quiet_xml_errors.h"
#include "extract/html_parser.h"
#include "tests/support/damage.h"
#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

using test::repeated;

std::string dumped(xmlDoc* document) {
  if (document == nullptr) return "no document";
  xmlChar* text = nullptr;
  int size = 0;
  xmlDocDumpMemory(document, &text, &size);
  std::string dump(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
  xmlFree(text);
  xmlFreeDoc(document);
  return dump;
}

TEST(PageParser, MakesTheTreeThatTheLibraryMakes) {
  const QuietXmlErrors quiet;
  std::size_t pages = 0;
  for (const char* folder : {"/examples/larkfield", "/fuzz/corpus/page"}) {
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(QUORVEX_SOURCE_DIR + std::string(folder))) {
      if (!entry.is_regular_file()) continue;
      const Data page = readFile(entry.path()).value();
      const std::string expected =
          dumped(htmlReadMemory(page.bytes().data(), static_cast<int>(page.size()), "", nullptr,
                                HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING));
      EXPECT_EQ(dumped(parsePage(page).document), expected) << entry.path();
      ++pages;
    }
  }
  EXPECT_GT(pages, 10U);
}

TEST(PageParser, GivesUpPagesBeyondTheLimits) {
  const QuietXmlErrors quiet;
  std::string attributes;
  for (int i = 0; i < 3000; ++i) {
    attributes += " a" + std::to_string(i);
  }
  const PageLimits timeless{.seconds = 0, .secondsPerMiB = 0};
  const struct {
    std::string page;
    PageLimits limits;
    std::string trouble;
  } cases[] = {
      {"<p" + attributes.substr(0, 7000) + ">", {}, ""},
      {"<p" + attributes + ">", {}, ""},
      {"<p" + attributes + ">", {.attributes = 2000}, "A tag has too many attributes"},
      {"<p" + attributes, {.attributes = 2000}, "A tag has too many attributes"},
      {repeated("<p a b>", 10), {.nodes = 32}, ""},
      {repeated("<p a b>", 10), {.nodes = 31}, "The page has too many elements"},
      {repeated("<p>", 200'000), timeless, "The page takes too long"},
      {"<html><body>" + repeated("<html a>", 200'000), timeless, "The page takes too long"},
      {std::string(maximumPageSize + 1, ' '), {}, "The page is too large"},
  };
  for (const auto& [page, limits, trouble] : cases) {
    const ParsedPage parsed = parsePage(Data(page), limits);
    EXPECT_EQ(parsed.trouble, trouble) << page.substr(0, 20);
    EXPECT_EQ(parsed.document != nullptr, trouble.empty());
    xmlFreeDoc(parsed.document);
  }
}

}  // namespace
}  // namespace quorvex
