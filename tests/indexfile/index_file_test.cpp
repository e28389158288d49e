#include <gtest/gtest.h>

#include "indexfile/index_file_reader.h"
#include "tests/support/damage.h"
#include "tests/support/frame_files.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::tableOf;
using test::withTable;

Dictionary sample() {
  Dictionary anchors;
  for (int i = 0; i < 20'000; ++i)
    anchors.emplace("anchor" + std::to_string(i), Array{"/page" + std::to_string(i % 99)});
  std::string numbers;
  for (int i = 0; i < 60'000; ++i)
    numbers += std::to_string(i);
  return {{"RDXIndexData", Data(numbers)},
          {"TSI_INDEX_DATA", Data(numbers.substr(70'000))},
          {"TSI_ANCHOR_DATA", std::move(anchors)},
          {"TSI_REMOTE_ROOT", "https://example.org"},
          {std::string(100, 'k'), 1}};
}

class IndexFileOpening : public testing::Test {
 protected:
  /// Opens a file and compares it with the sample; returns whether that is read by its table.
  bool opensByTable(const std::string& file) const {
    folder.write("index", file);
    const auto opened = openIndexFile(folder.path() / "index");
    EXPECT_TRUE(opened && opened->file);
    const IndexFile& index = *opened->file;
    const FrameStore::Use use(index.store);
    EXPECT_TRUE(index.semantic == *root.at("RDXIndexData").data());
    EXPECT_TRUE(index.fullText == *root.at("TSI_INDEX_DATA").data());
    EXPECT_TRUE(*readAnchors(index) == *root.at("TSI_ANCHOR_DATA").dictionary());
    EXPECT_EQ(index.remoteRoot, "https://example.org");
    EXPECT_TRUE(index.items.empty());
    return index.store != nullptr;
  }

  test::TemporaryFolder folder;
  Dictionary root = sample();
};

TEST_F(IndexFileOpening, ReadsLittle) {
  root.erase(std::string(100, 'k'));
  const std::string file = test::indexFile(root);
  folder.write("index", file);
  const auto opened = openIndexFile(folder.path() / "index");
  const IndexFile& index = *opened->file;
  ASSERT_NE(index.store, nullptr);
  EXPECT_LE(index.store->unpackedSize(), 4 * contentOfFrame);
  EXPECT_GT(index.semantic->size() + index.fullText->size(), 5 * contentOfFrame);
  EXPECT_TRUE(opensByTable(file));
}

TEST_F(IndexFileOpening, WithoutAUsableTableTheWholeIsRead) {
  const std::string longKey = test::indexFile(root);
  EXPECT_FALSE(opensByTable(longKey));
  root.erase(std::string(100, 'k'));
  const std::string file = test::indexFile(root);
  const FrameTable table = *tableOf(file);
  EXPECT_FALSE(opensByTable(test::shrunk(file, test::sizeOfTable(file))));
  EXPECT_FALSE(opensByTable(test::flipped(file, file.size() - 30)));
  for (std::size_t i = 0; i < table.bounds.size(); ++i) {
    FrameTable changed = table;
    changed.bounds[i] += 1;
    EXPECT_FALSE(opensByTable(withTable(file, changed))) << i;
    changed.bounds.erase(changed.bounds.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(opensByTable(withTable(file, changed))) << i;
  }
}

TEST_F(IndexFileOpening, DamageIsRefused) {
  const std::string file = test::indexFile(root);
  const auto opens = [&](const std::string& bytes) {
    folder.write("index", bytes);
    return openIndexFile(folder.path() / "index")->file.ok();
  };
  EXPECT_TRUE(opens(file));
  EXPECT_FALSE(opens(test::flipped(file, 100)));
  EXPECT_FALSE(opens(test::framed("\xD9\xD9\xF7", {3})));
  EXPECT_FALSE(opens(test::framed("no archive at all", {3, 9})));
  EXPECT_FALSE(opens(""));
  EXPECT_FALSE(openIndexFile(folder.path() / "missing").ok());
}

}  // namespace
}  // namespace quorvex
