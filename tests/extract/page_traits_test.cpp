#include <gtest/gtest.h>

#include "extract/parse_document_operation.h"

namespace quorvex {
namespace {

/// The traits of a page as "links/code language".
std::string traitsOf(const std::string& html) {
  const IndexSettings settings;
  QXParseDocumentOperation operation(Data(html), "p.html", 2, settings);
  operation.main();
  const auto& traits = operation.primaryDocument()->traits();
  if (!traits) return "none";
  return std::to_string(traits->linkShare) + "/" + std::to_string(traits->codeShare) + " " +
         traits->language;
}

TEST(PageTraits, OfSmallPages) {
  const std::string ten = "ab\nCD \t9.-  \xC3\xA9z";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "0/0 "},
      {"<html lang=de-AT><title>abc</title><p>" + ten, "0/0 de-AT"},
      {"<ul><li><a href=a>" + ten + "</a><li><a href=b><b>" + ten + "</b></a></ul>", "255/0 "},
      {"<a name=x>" + ten + "</a><a href=''>" + ten, "0/0 "},
      {"<pre>" + ten + "<a href=#a>" + ten + "</a></pre>" + ten + ten, "64/128 "},
      {"<nav>" + ten + "<a href=#a>" + ten + "</a></nav>" + ten + "<div role=navigation>" + ten,
       "0/0 "},
      {"<nav><a href=a>" + ten + "</a></nav><p>" + ten + "<a href=b>" + ten, "128/0 "},
      {"<p>" + ten + "<a href='help:x'>" + ten + ten + "</a><script>" + ten +
           "</script><pre> </pre>",
       "0/0 "},
      {"<html xml:lang=en lang=en-GB>" + ten, "0/0 en-GB"},
      {"<html lang='' xml:lang=fr><p lang=de>" + ten, "0/0 fr"},
      {"<html lang='e n'>" + ten, "0/0 "},
      {"<html lang=" + std::string(36, 'a') + ">" + ten, "0/0 "},
      {"<meta name=robots content=keywords><a href=a>" + ten, "none"},
  };
  for (const auto& [html, expected] : cases)
    EXPECT_EQ(traitsOf(html), expected) << html;
}

}  // namespace
}  // namespace quorvex
