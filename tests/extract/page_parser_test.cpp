#include "extract/page_parser.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>

#include "common/files.h"
#include "common/quiet_xml_errors.h"
#include "extract/html_parser.h"
#include "extract/read_attributes.h"
#include "tests/extract/random_page.h"
#include "tests/support/damage.h"
#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

using test::repeated;

std::string view(const xmlChar* text) {
  return text == nullptr ? "-" : reinterpret_cast<const char*>(text);
}

/// What is read of a tree: in a plain one, all nodes and attributes.
void describe(const xmlNode* node, PageTreeKind kind, std::string& out) {
  for (; node != nullptr; node = node->next) {
    out += std::to_string(node->type) + view(node->name);
    const bool isElement = node->type == XML_ELEMENT_NODE;
    const xmlAttr* attribute = isElement ? node->properties : nullptr;
    const std::size_t begin = out.size();
    for (; attribute != nullptr; attribute = attribute->next) {
      if (kind == PageTreeKind::arena && !isReadAttribute(node->name, attribute->name)) continue;
      out += ' ' + view(attribute->name) + '=';
      describe(attribute->children, kind, out);
      // All that the tree has of the link, when its first attribute counts.
      if (kind == PageTreeKind::arena && out.substr(begin).find("help:") != std::string::npos) {
        out += view(node->properties->name);
      }
    }
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE ||
        (node->type == XML_COMMENT_NODE && kind == PageTreeKind::plain)) {
      out += view(node->content);
    }
    out += '(';
    if (isElement) describe(node->children, kind, out);
    out += ')';
  }
}

std::string described(const xmlDoc* document, PageTreeKind kind) {
  std::string text = "no document";
  if (document != nullptr) describe(document->children, kind, text);
  return text;
}

constexpr PageTreeKind kinds[] = {PageTreeKind::plain, PageTreeKind::arena};

void expectTheLibrarysTree(const Data& page, const std::string& name) {
  const QuietXmlErrors quiet;
  xmlDoc* document = htmlReadMemory(page.bytes().data(), static_cast<int>(page.size()), "", nullptr,
                                    HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
  for (const PageTreeKind kind : kinds) {
    const ParsedPage parsed = parsePage(page, {}, kind);
    // Compared here because a difference in megabytes need not be printed.
    EXPECT_TRUE(described(parsed.document(), kind) == described(document, kind)) << name;
  }
  xmlFreeDoc(document);
}

TEST(PageParser, MakesTheTreeThatTheLibraryMakes) {
  std::size_t pages = 0;
  for (const char* folder : {"/examples/larkfield", "/fuzz/corpus/page"}) {
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(QUORVEX_SOURCE_DIR + std::string(folder))) {
      if (!entry.is_regular_file()) continue;
      const Data page = readFile(entry.path()).value();
      expectTheLibrarysTree(page, entry.path());
      ++pages;
    }
  }
  EXPECT_GT(pages, 10U);
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    const std::string page = test::randomPage(random);
    expectTheLibrarysTree(Data(page), page);
  }
  // A text beyond ten million bytes ends the page.
  const std::string text = repeated("0123456789", 1'000'500);
  for (const char* tag : {"<p>", "<script>", "<!--", "<p a='", "<!DOCTYPE x"}) {
    expectTheLibrarysTree(Data(tag + text + "<p>end"), tag);
  }
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
      {"<p" + attributes + ">", {}, ""},
      {"<p" + attributes + ">", {.attributes = 2000}, "A tag has too many attributes"},
      {"<p" + attributes, {.attributes = 2000}, "A tag has too many attributes"},
      {repeated("<p a b>", 10), {.nodes = 32}, ""},
      {repeated("<p a b>", 10), {.nodes = 31}, "The page has too many elements"},
      {repeated("<p>", 200'000), timeless, "The page takes too long"},
      {repeated("<p" + attributes + ">", 2), timeless, "The page takes too long"},
      {"<html><body>" + repeated("<html a>", 200'000), timeless, "The page takes too long"},
      // Not stopped while its input is converted: stopping frees the growing buffer.
      {"<meta charset=iso-8859-1><p>" + std::string(1'000'000, '\xE9'), timeless, ""},
      {std::string(maximumPageSize + 1, ' '), {}, "The page is too large"},
  };
  for (const auto& c : cases) {
    for (const PageTreeKind kind : kinds) {
      const ParsedPage parsed = parsePage(Data(c.page), c.limits, kind);
      EXPECT_EQ(parsed.trouble, c.trouble) << c.page.substr(0, 20);
      EXPECT_EQ(parsed.document() != nullptr, c.trouble.empty());
    }
  }
}

}  // namespace
}  // namespace quorvex
