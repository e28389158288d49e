#include "view/page/marked_page.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace quorvex::view {
namespace {

/// Finds words of letters, dots and whatever is not ASCII.
Matcher matcherOf(std::set<std::string, std::less<>> words) {
  return [words = std::move(words)](std::string_view text) {
    const auto isOfWord = [](char byte) {
      return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '.' ||
             byte < 0;
    };
    std::vector<TextRange> ranges;
    for (auto at = text.begin(); at != text.end();) {
      const auto begin = std::find_if(at, text.end(), isOfWord);
      at = std::find_if_not(begin, text.end(), isOfWord);
      if (!words.contains(std::string_view(begin, at))) continue;
      ranges.push_back({static_cast<std::size_t>(begin - text.begin()),
                        static_cast<std::size_t>(at - text.begin())});
    }
    return ranges;
  };
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

/// Shows marks as parentheses and the page's tags as "@".
std::string shown(std::string page) {
  page = replaced(std::move(page), markBegin, "(");
  return replaced(replaced(std::move(page), markEnd, ")"), pageTags, "@");
}

TEST(MarkedPage, PutsItsTagsBeforeAnythingOfThePage) {
  for (const std::string wanted : {
           "<!-- <head> --><!DOCTYPE html>\n<html lang=en>\n<HEAD profile='>'>@<title>",
           "<?xml version='1.0'?><!DOCTYPE html PUBLIC 'x' 'y'><html>@<body>",
           "<!doctype html>@<p><head>",
           "<html>@<!-- c --><p>",
           "@<!-- no doctype --><p>",
           "@<header><head>",
           "@text<html><head>",
           "@<!-- <head>",
           "@<!doctype",
           "@",
       }) {
    EXPECT_EQ(shown(pageForReading(replaced(wanted, "@", ""), nullptr)), wanted);
  }
}

TEST(MarkedPage, MarksTheTextThatReadersSee) {
  for (const std::string wanted : {
           // Words within a line go on behind a tag, those of two blocks do not.
           "<p>(a) ba (a), <i>(a)</i>",
           "<b>(Task)</b><!-- . -->(.can)<wbr>(cel) .cancel",
           "<p>Task<p>.cancel Task<br>.cancel<td>Task<img>.cancel",
           // References count as what they stand for, and are never split.
           "(a)&amp;(a)&lt(a) &#40;(a)&#x29;&nbspa &shy;a &copya (a)",
           "(stra&szlig;e) (stra&#223e) (stra\xC3\x9F"
           "e) &a; &ab; &amp &(a)",
           "(&bogus;a) R&D &(a)",
           // What only looks like markup, or like none
           "(a) < (a) <3 (a) <> (a)</",
           "<p title='a>a' x=a\"a>(a)<p =a>(a)<p a=b/>(a)</p a='>'>(a) </ a >(a) </>(a) <? a >(a)",
           "<!-->(a) <!--->(a) <!-- a --!>(a) <!-- a -- > a -->(a) <!a>(a) <![CDATA[a>(a)]]><!--a",
           "<p>(a)<p a",
           // Not displayed, or no place for marks
           "<title>a<b></title><style>a</styles>a</STYLE >(a)",
           "<textarea>a</textarea>(a)<noscript>a</noscript>(a)<iframe>a<p></iframe>(a)",
           "<script>a</script>(a)<script><!-- a <script> a </script> a --></script>(a)",
           "<script><!-- <script> --></script>(a)<script><!-- a "
           "</script>(a)<script><!--></script>(a)",
           "<select><option>a</select>(a)<button>a<b>a</b></button>(a)<script>a",
           "<template>a<template>a</template>a</template>(a)",
           "<svg><title>a</title><style>a<b></style><![CDATA[ > a ]]>a</svg>(a)<svg/>(a)",
           "<svg><foreignObject><style></svg></style>a</foreignObject>a</svg>(a)",
           "<svg><a>a<p>(a)<math><mi>a</math>(a)<plaintext>a</plaintext>a",
           // A mark before the first line break would make it a line
           "<pre>\n(a)\n</pre>",
       }) {
    std::string page = replaced(replaced(wanted, "(", ""), ")", "");
    const Matcher matcher = matcherOf({"a", "Task.cancel",
                                       "stra\xC3\x9F"
                                       "e",
                                       "\xEF\xBF\xBD"
                                       "a"});
    EXPECT_EQ(shown(pageForReading(page, matcher)).erase(0, 1), wanted);
  }
}

TEST(MarkedPage, TakesNoMatcherAtItsWord) {
  const auto marked = [](std::vector<TextRange> ranges) {
    return shown(pageForReading("\xC3\xA4<i>\xC3\xB6</i>&lt; b<p>c", [&](auto) { return ranges; }));
  };
  EXPECT_EQ(marked({{0, 99}, {3, 3}, {2, 1}}), "@\xC3\xA4<i>\xC3\xB6</i>&lt; b<p>c");
  EXPECT_EQ(marked({{1, 3}, {2, 4}, {3, 6}}), "@(\xC3\xA4)<i>(\xC3\xB6)</i>(&lt;) b<p>c");
  EXPECT_EQ(marked({{4, 9}}), "@\xC3\xA4<i>\xC3\xB6</i>(&lt; b)<p>(c)");
}

TEST(MarkedPage, TakesLongPagesInPartsAndStopsSomewhere) {
  std::string wanted;
  for (int i = 0; i < 20'000; ++i)
    wanted +=
        i % 8 == 0 ? "(word), other words: none &lt; \xC3\xA4\n" : "other lines are long enough ";
  const Matcher words = matcherOf({"word"});
  std::size_t largest = 0;
  const Matcher matcher = [&](std::string_view text) {
    largest = std::max(largest, text.size());
    return words(text);
  };
  std::string page = replaced(replaced(wanted, "(", ""), ")", "");
  EXPECT_TRUE(shown(pageForReading(page, matcher)) == "@" + wanted);
  EXPECT_LT(largest, page.size());

  for (const std::string block : {"<p>word", "word "}) {
    page.clear();
    for (int i = 0; i < 6000; ++i)
      page += block;
    const std::string marked = shown(pageForReading(page, matcher));
    EXPECT_EQ(std::count(marked.begin(), marked.end(), '('), 5000);
  }
  largest = 0;
  pageForReading(std::string(8 << 20, 'x'), matcher);
  EXPECT_LT(largest, std::size_t{3} << 20U);
}

}  // namespace
}  // namespace quorvex::view
