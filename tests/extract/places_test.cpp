#include "extract/places.h"

#include <gtest/gtest.h>

#include "common/bytes.h"
#include "extract/defined_names.h"
#include "extract/page_limits.h"
#include "extract/parse_document_operation.h"
#include "tests/support/damage.h"

namespace quorvex {
namespace {

std::shared_ptr<QXParsedDocument> parsed(const std::string& html) {
  const IndexSettings settings;
  QXParseDocumentOperation operation(Data(html), "p.html", 4, settings);
  operation.main();
  return operation.primaryDocument();
}

std::vector<TSPlace> unpacked(const TSPlaces& packed) {
  std::vector<TSPlace> places;
  ByteReader reader(packed.entries);
  for (const std::uint32_t offset : packed.offsets) {
    TSPlace& place = places.emplace_back();
    place.offset = offset;
    place.level = reader.byte();
    place.fragment = reader.text();
    place.heading = reader.text();
    for (std::uint64_t left = reader.varint(); left > 0; --left) {
      const auto kind = static_cast<TSNameKind>(reader.byte());
      place.names.push_back({std::string(reader.text()), kind});
    }
  }
  return places;
}

/// Each place as "the word there, level #fragment (heading) =definition ~heading ?term".
std::string listed(const std::string& body) {
  const auto document = parsed("<title>Page</title><body>" + body);
  const std::string& content = document->content();
  std::string list;
  for (const TSPlace& place : unpacked(document->places())) {
    list += list.empty() ? "" : "; ";
    list += content.substr(place.offset, content.find_first_of(" \n", place.offset) - place.offset);
    if (place.level > 0) list += " " + std::to_string(place.level);
    if (!place.fragment.empty()) list += " #" + place.fragment;
    if (!place.heading.empty()) list += " (" + place.heading + ")";
    for (const TSName& name : place.names)
      list += std::string(" ") + "=~?"[static_cast<std::size_t>(name.kind)] + name.text;
  }
  return list;
}

using Cases = std::vector<std::pair<std::string, std::string>>;

void expectPlaces(const Cases& cases) {
  for (const auto& [body, expected] : cases)
    EXPECT_EQ(listed(body), expected) << body;
}

const std::string prose = " A sentence of more than a few words stands between. ";

TEST(Places, HeadingsAndWhatLeadsToThem) {
  expectPlaces({
      {"a<h2 id=i>Red pumps</h2>b<h3>Deep</h3>",
       "Red 2 #i (Red pumps) ~Red pumps; Deep 3 (Deep) ~Deep"},
      {"<a name=r></a>\n<h2>Red</h2>", "Red 2 #r (Red) ~Red"},
      {"<h2 id=a>Red<a href='#a'>\u00B6</a></h2><h2><a href='#b' id=b>#</a> Blue</h2>",
       "Red 2 #a (Red) ~Red; # 2 #b (Blue) ~Blue"},
      {"<h2 id=a><a href='#a'>1</a></h2><h2 id=b><i></i> </h2>x", "1 2 #a (1) ~1; x #b"},
      {"<h2 id=a>Red</h2><h2 id=a>Blue</h2>", "Red 2 #a (Red) ~Red; Blue 2 (Blue) ~Blue"},
      {"<h2 id=a>Red\u00A0\u2009pump \u2014 \u201CX\u201D</h2>",
       "Red\u00A0\u2009pump 2 #a (Red pump \u2014 \u201CX\u201D) ~Red pump \u2014 \u201CX\u201D"},
  });
}

TEST(Places, TermsOfDefinitionLists) {
  expectPlaces({
      {"<h2>H</h2><dl><dt id=a>abc<dd>x<dt>de f<dd>y</dl>z",
       "H 2 (H) ~H; abc 7 #a (abc) ?abc; de 7 (de f) ~de f; z 7"},
      {"<h2>H</h2><dl><dt>1. <a href=#t>T</a></dt><dt><a href=#a>a</a></dt><dd><dl><dt><a href=#b>b"
       "</a></dt></dl></dd><dt>c</dt><dt><a href=#d>d</a></dt><dd>x</dd></dl>",
       "H 2 (H) ~H; c 8; c 7 (c) ?c ?d;  7"},
      {"<dl><dt id=o>-c<br>--clean=<i>x</i><dd>x</dl>", "-c 7 #o (-c) ?-c ?--clean;  7"},
      {"<dl><dt id=opt-a>-a <i>f</i>, --all</dt><dt id=opt-b>-b, --all<dd>x</dl>",
       "-a 7 #opt-a (-a) =-a ?--all; -b, #opt-b =-b;  7"},
      {"<dl><dt>a1<dd><dl><dt>b1<dd>x</dl>y<dt>c1<dd>z</dl>w",
       "a1 7 (a1) ?a1; b1 8 (b1) ?b1; y 8; c1 7 (c1) ?c1; w 7"},
      {"<dl><dt><a name='x.y'></a><code>x.y</code>(<i>z</i>) \u2192 int<dd>does</dl>",
       "x.y 7 #x.y (x.y) =x.y;  7"},
  });
}

TEST(Places, OtherElementsWithFragments) {
  expectPlaces({
      {prose + "<p id=set_up>set_up is" + prose + "<table><tr id=row-one><td>one<td>x",
       "set_up #set_up ~set_up; one #row-one"},
      {"<nav id=n><h2 id=h>x</h2></nav><header><h1 id=i>x</h1></header><p id=abc>abc",
       "abc #abc ~abc"},
      {"<footer id=f><a name=g>x</a></footer><div role=navigation id=h>x</div>", ""},
      {"<p id=L23>x<p id=id-1.2.3>y<p id=abc>z<i id=abc>again</i><a id='' name=n>n</a>",
       "z #abc; n #n ~n"},
      // NOLINTBEGIN(misc-misleading-bidirectional): on purpose
      {"<p id='a b'>x<p id='a\u202Eb'>y", "x #a b; y #a\u202Eb"},
      {"<p id=" + std::string(largestFragment, 'a') + "x>y<h2 id=b>" + "B</h2>", "B 2 #b (B) ~B"},
      {"<h2 id=a>R\u202Ee&#7;d</h2><h2 id=b>Bl\xFFue</h2>",
       "R\u202Eed 2 #a (R\u202Eed) ~R\u202Eed; Bl\u00FFue 2 #b (Bl\u00FFue) ~Bl\u00FFue"},
      // NOLINTEND(misc-misleading-bidirectional)
  });
}

/// Otherwise each place would read the long text behind or before it, which takes minutes.
TEST(Places, ReadLongTextsOnce) {
  const std::string blank(2'000'000, ' ');
  const auto many = [](const std::string& before, const std::string& after) {
    std::string html;
    for (int i = 0; i < 50'000; ++i)
      html.append(before).append(std::to_string(i)) += after;
    return html;
  };
  const std::string ids = many("<b id=name", "x></b>");
  EXPECT_EQ(parsed("<body>" + ids + blank + "text")->places().offsets.size(), mostPlaces);
  EXPECT_EQ(
      parsed("<body>" + ids + "<a>" + std::string(blank.size(), '-'))->places().offsets.size(),
      mostPlaces);
  EXPECT_EQ(parsed("<body><b id=x></b>" + blank + many("<i id=x title=", "></i>"))
                ->places()
                .offsets.size(),
            1U);
  EXPECT_EQ(unpacked(parsed("<body><dl>" + many("<dt>a,b,c,d,e", ",f</dt>"))->places())
                .front()
                .names.size(),
            500U);
}

TEST(Places, NamesThatFragmentsAreMadeOf) {
  const std::vector<std::array<std::string, 3>> cases = {
      {"method to_str", "method.to_str", "method to_str"},
      {"-fzero", "index-fzero-2", "-fzero"},
      {"SQLITE_ENABLE_MEMSYS5", "enable_memsys5", "SQLITE_ENABLE_MEMSYS5"},
      {"static foo(int a)", "foo(int)", "foo"},
      {"The pump runs", "the-pump-runs", "The pump runs"},
      {"\u201Cquoted\u201D text", "quoted", "quoted"},
      {"other", "something", ""},
  };
  for (const auto& [text, fragment, expected] : cases)
    EXPECT_EQ(nameOfFragment(text, fragment), expected) << text << ' ' << fragment;
}

}  // namespace
}  // namespace quorvex
