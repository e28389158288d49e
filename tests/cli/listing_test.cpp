#include "cli/listing.h"

#include <gtest/gtest.h>

#include "common/keyed_document.h"
#include "platform/searchable_item.h"
#include "platform/textsift.h"
#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

std::string listing(const Dictionary& index, ListMode mode, bool verbose, IndexFormat format) {
  return test::printed(-1, [&] { EXPECT_TRUE(listIndex(index, mode, verbose, format)); });
}

TEST(Listing, FullTextFormWithoutAnIndex) {
  const Dictionary anchors{{"beta", Array{"/b"}}, {"Alpha", Array{"/a"}}, {"alpha2", Array()}};
  const Dictionary index{{"TSI_ANCHOR_DATA", anchors},
                         {"TSI_VERSIONS", "versions"},
                         {"TSI_INDEX_DATA", Data("no index")},
                         {"TSI_REMOTE_ROOT", "http://a"}};
  const auto list = [&](ListMode mode) { return listing(index, mode, true, IndexFormat::lsm); };
  EXPECT_EQ(list(ListMode::anchors), "Alpha\nalpha2\nbeta\n");
  EXPECT_EQ(list(ListMode::anchorDictionary), *keyedDocumentXml(anchors));
  EXPECT_EQ(list(ListMode::files), "");
  EXPECT_EQ(list(ListMode::indexVersions), *keyedDocumentXml("versions"));
  EXPECT_EQ(list(ListMode::remoteURL), "http://a\n");
  EXPECT_EQ(list(ListMode::rdxSummary), "Index file does not contain RDX data");

  EXPECT_EQ(listing({}, ListMode::anchors, true, IndexFormat::lsm), "(null)\n");
  EXPECT_EQ(listing({}, ListMode::anchorDictionary, true, IndexFormat::lsm), "");
}

TEST(Listing, FullTextFormWalksTheDocuments) {
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef built = TSIndexCreateWithMutableData(
      buffer, std::nullopt, TSIndexType::inverted,
      {{std::string(kTSMinTermLength), 2}, {std::string(kTSStopWords), Array{"und", "Der"}}});
  const auto add = [&](const TSDocumentRef& parent, const char* path, const char* text) {
    TSDocumentRef document = TSDocumentCreateWithParent(parent, *URL::fileURL(path));
    EXPECT_TRUE(TSIndexAddDocumentWithText(built, document, text, false));
    return document;
  };
  const TSDocumentRef first = add(nullptr, "/a b#c.html", "Zwei der x eins");
  TSIndexSetDocumentProperties(built, first, {{"T", "Title"}});
  const TSDocumentRef nested = add(first, "/a/nested", "");
  add(nullptr, "/last\xFF", "eins");
  add(nested, "/a/nested/deep", "tief");
  TSIndexClose(built);
  const Dictionary index{{"TSI_INDEX_DATA", Data(*buffer)}};
  const auto list = [&](ListMode mode, bool verbose) {
    return listing(index, mode, verbose, IndexFormat::lsm);
  };
  EXPECT_EQ(list(ListMode::files, false),
            "/a b#c.html\n\n/a/nested\n\n/a/nested/deep\n\n/last\uFFFD\n\n");
  EXPECT_TRUE(
      list(ListMode::files, true)
          .starts_with("/a b#c.html\n    Title: Title\n    Descr: (null)\n\n/a/nested\n\n"));
  EXPECT_EQ(list(ListMode::fileTerms, false),
            "/a b#c.html\n        eins\n        zwei\n\n/a/nested\n\n"
            "/a/nested/deep\n        tief\n\n/last\uFFFD\n        eins\n\n");
  EXPECT_EQ(list(ListMode::minTermLength, false), "2\n");
  EXPECT_EQ(list(ListMode::stopwords, false), "Der\nund\n");
}

TEST(Listing, SearchableItemsForm) {
  const auto item = [](std::optional<Value> path, std::optional<Value> tags, bool full) {
    auto set = std::make_shared<BCSearchableItemAttributeSet>("topic");
    set->setAttribute(std::move(path), "_kQRItemHelpPath");
    set->setAttribute(std::move(tags), "_kQRItemHelpTags");
    if (full) {
      set->setDisplayName("Name");
      set->setContentDescription("");
      set->setKeywords(std::vector<std::string>{"k1", "k2"});
    }
    return Value(Value::Object(
        std::make_shared<const BCSearchableItem>(std::nullopt, std::nullopt, std::move(set))));
  };
  const Dictionary index{
      {"BC_INDEXABLE_ITEMS",
       Array{item("/b", Array{"intro", "Zed"}, true), "no item",
             item(std::nullopt, Array{"lost"}, false), item("/a", Array{"intro"}, false)}},
      {"BC_INDEXABLE_ITEMS_VERSION", "1.0"}};
  const auto list = [&](ListMode mode, bool verbose = false) {
    return listing(index, mode, verbose, IndexFormat::beacon);
  };
  EXPECT_EQ(list(ListMode::anchors), "intro\nZed\n");
  EXPECT_EQ(list(ListMode::anchorDictionary),
            *keyedDocumentXml(Dictionary{{"intro", Array{"/b", "/a"}}, {"Zed", Array{"/b"}}}));
  EXPECT_EQ(list(ListMode::files), "/b\n(null)\n/a\n");
  EXPECT_EQ(list(ListMode::fileTerms, true),
            "/b\n    Title: Name\n    Descr: \n        k1\n        k2\n"
            "(null)\n    Title: (null)\n    Descr: (null)\n/a\n    Title: (null)\n"
            "    Descr: (null)\n");
  EXPECT_EQ(list(ListMode::indexVersions), *keyedDocumentXml("1.0"));
  EXPECT_EQ(list(ListMode::minTermLength),
            "The specified list mode is not supported by the index format.\n");
  EXPECT_EQ(listing({}, ListMode::anchors, false, IndexFormat::beacon), "\n");
}

}  // namespace
}  // namespace quorvex
