#include <filesystem>

#include <gtest/gtest.h>

#include "cli/index_container.h"
#include "common/files.h"
#include "platform/searchable_item.h"
#include "tests/support/archives.h"
#include "tests/support/cbor_forms.h"
#include "tests/support/damage.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;
using test::printed;

Value searchableItem() {
  auto set = std::make_shared<BCSearchableItemAttributeSet>("com.corvane.help.topic");
  set->setTextContent("words");
  set->setAttribute(Array{"one"}, "_kQRItemHelpTags");
  return Value::Object(std::make_shared<BCSearchableItem>(std::nullopt, std::nullopt, set));
}

Dictionary sample() {
  return {{"TSI_INDEX_DATA", Data(std::string(200'000, 'i'))},
          {"TSI_USE_REMOTE_ROOT", false},
          {"TSI_ANCHOR_DATA", Dictionary{{"a", Array{"/x.html"}}}},
          {"BC_INDEXABLE_ITEMS", Array{searchableItem()}}};
}

class IndexContainer : public testing::Test {
 protected:
  std::string at(const char* name) const { return (folder.path() / name).string(); }

  /// Writes a file containing `root` in the compressed formats.
  void store(const char* name, const Value& root) const { storeArchive(name, test::keyed(root)); }
  void storeArchive(const char* name, const std::string& archive) const {
    folder.write(name, test::compressed(archive));
  }

  test::TemporaryFolder folder;
};

TEST_F(IndexContainer, CompressedFormatsComeBackThroughBothReaders) {
  for (const IndexFormat format : {IndexFormat::lsm, IndexFormat::beacon}) {
    const std::string path = at("a/b/index");
    bool written = false;
    EXPECT_EQ(printed(3, [&] { written = writeIndexFile(sample(), path, format); }),
              "Writing generated index out to path: " + path + "\n");
    EXPECT_TRUE(written);
    EXPECT_EQ(readIndexFileForListing(path), sample());
    EXPECT_EQ(readIndexFileForCreate(path, format), sample());
    EXPECT_LT(fs::file_size(path), 5000U);
  }
}

TEST_F(IndexContainer, FormatNoneIsASequentialArchiveThatNoReaderTakes) {
  const std::string path = at("index");
  EXPECT_TRUE(writeIndexFile(Dictionary{{"k", "v"}}, path, IndexFormat::none));
  EXPECT_EQ(readFile(path)->bytes(), test::sequential({{"k", "v"}}));
  EXPECT_EQ(printed(4,
                    [&] {
                      EXPECT_FALSE(readIndexFileForListing(path).has_value());
                      EXPECT_FALSE(readIndexFileForCreate(path, IndexFormat::lsm).has_value());
                    }),
            "");
  EXPECT_EQ(
      printed(0,
              [&] { EXPECT_FALSE(readIndexFileForCreate(path, IndexFormat::none).has_value()); }),
      "Unsuported index format\n");
}

TEST_F(IndexContainer, WritesThatFail) {
  folder.write("file", "old");
  Value deep = 1;
  for (int i = 0; i < 200; ++i)
    deep = Array{std::move(deep)};
  const std::string blocked = at("file/sub");
  const struct {
    std::optional<Dictionary> index;
    std::optional<std::string> path;
    IndexFormat format;
    std::string message;  ///< without the progress note
  } cases[] = {
      {std::nullopt, at("x"), IndexFormat::lsm, ""},
      {std::nullopt, std::nullopt, IndexFormat::lsm, ""},
      {sample(), std::nullopt, IndexFormat::lsm,
       "Error creating directory at path <(null)>: (null)\n"},
      {sample(), blocked + "/index", IndexFormat::lsm,
       "Error creating directory at path <" + blocked + ">: Not a directory\n"},
      {Dictionary{{"deep", deep}}, at("file"), IndexFormat::lsm,
       "Error serializing index data <Nested too deeply>\n"},
      {Dictionary{{"deep", deep}}, at("file"), IndexFormat::none,
       "Error writing out generated index to path <" + at("file") + ">\n"},
      {sample(), folder.path().string(), IndexFormat::beacon,
       "Error writing out generated index to path <" + folder.path().string() + ">\n"},
      {sample(), folder.path().string(), IndexFormat::none,
       "Error writing out generated index to path <" + folder.path().string() + ">\n"},
  };
  for (const auto& each : cases) {
    const auto write = [&] { EXPECT_FALSE(writeIndexFile(each.index, each.path, each.format)); };
    EXPECT_EQ(printed(1, write), each.message);
  }
  EXPECT_EQ(readFile(at("file"))->bytes(), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST_F(IndexContainer, ArchivesThatAreRefused) {
  class Stranger : public ArchivableObject {
   public:
    std::string_view className() const override { return "Stranger"; }
    Dictionary archivedFields() const override { return {}; }
  };
  store("root", "a string");
  store("stranger", Dictionary{{"a", Array{Value::Object(std::make_shared<Stranger>())}}});
  // An attribute set needs an item around it.
  store("carried",
        Dictionary{{"a", Value::Object(std::make_shared<BCSearchableItemAttributeSet>("x"))}});
  storeArchive("bomb", "\xD9\xD9\xF7" + test::repeated("\x81", 100'000));
  const struct {
    const char* name;
    const char* reason;  ///< part of it
  } cases[] = {{"root", "kind string"},
               {"stranger", "Stranger"},
               {"carried", "BCSearchableItemAttributeSet"},
               {"bomb", "map"}};
  for (const auto& [name, reason] : cases) {
    EXPECT_FALSE(readIndexFileForListing(at(name)).has_value()) << name;
    const std::string path = at(name);
    const std::string message =
        printed(1, [&] { (void)readIndexFileForCreate(path, IndexFormat::beacon); });
    EXPECT_TRUE(message.starts_with("Error trying to unarchive index data. Original path is <" +
                                    path + ">. Error: "))
        << message;
    EXPECT_NE(message.find(reason), std::string::npos) << message;
  }
}

}  // namespace
}  // namespace quorvex
