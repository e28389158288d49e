#include <functional>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "indexfile/frame_store.h"
#include "tests/support/damage.h"
#include "tests/support/frame_files.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::framed;

constexpr std::size_t frameSize = contentOfFrame;

std::string numbers(std::size_t size) {
  std::string content;
  for (std::size_t i = 0; content.size() < size; ++i)
    content += std::to_string(i * i % 9973) + ' ';
  content.resize(size);
  return content;
}

class Frames : public testing::Test {
 protected:
  std::shared_ptr<const FrameStore> open(const std::string& bytes,
                                         std::uint64_t kept = FrameStore::usuallyKept) const {
    folder.write("file", bytes);
    return FrameStore::open(*openRegularFile(folder.path() / "file"), kept);
  }

  test::TemporaryFolder folder;
  const std::string content = numbers(4 * frameSize + 1000);
  const std::string file = framed(content, {3, 10, content.size()});
};

TEST_F(Frames, ByteForm) {
  const std::string small = framed("hello", {1, 4});
  EXPECT_EQ(test::toHex(small),
            "28b52ffd2405290000"
            "68656c6c6f"
            "a36d9f88"          // the frame
            "502a4d181d000000"  // a skippable frame of 29 bytes
            "01"
            "808004"
            "05"
            "12"
            "020103"
            "1d000000"
            "0fc38d36bb5953b2"
            "51584652414d4553");
  EXPECT_EQ(decompress(file)->bytes(), content);  // without looking at the table
}

TEST_F(Frames, TablesThatAreNotBelieved) {
  const FrameTable table = *test::tableOf(file);
  ASSERT_NE(open(file), nullptr);
  const std::function<void(FrameTable&)> changes[] = {
      [](FrameTable& t) { t.frameSize = frameSize - 1; },
      [](FrameTable& t) { t.frameSize = frameSize / 2; },
      [](FrameTable& t) { t.frameSize = 0; },
      [](FrameTable& t) { t.frameSize = 2 * largestContentOfFrame; },
      [](FrameTable& t) { t.frameSize = std::uint64_t{1} << 63U; },
      [](FrameTable& t) { t.contentSize = 0; },
      [](FrameTable& t) { t.contentSize += frameSize; },
      [](FrameTable& t) { t.contentSize = UINT64_MAX; },
      [](FrameTable& t) { t.packedSizes[1] = 0; },
      [](FrameTable& t) { t.packedSizes[1] += 100; },
      [](FrameTable& t) { t.packedSizes[1] -= 1; },  // what is left is no padding
      [](FrameTable& t) { t.packedSizes[1] = UINT64_MAX; },
      [](FrameTable& t) { t.packedSizes.pop_back(); },
      [](FrameTable& t) { t.packedSizes.push_back(1); },
      [](FrameTable& t) { t.bounds.back() += 1; },
      [](FrameTable& t) { t.bounds[1] = t.bounds[0]; },
      [](FrameTable& t) { t.bounds[1] = 1; },
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    FrameTable changed = table;
    changes[i](changed);
    const std::string lie = test::withTable(file, changed);
    EXPECT_EQ(open(lie), nullptr) << i;
    EXPECT_EQ(decompressFile(folder.path() / "file")->content->bytes(), content) << i;
  }
  // A table for more content than such a file may have.
  FrameTable bomb{.contentSize = frameSize << 10U, .packedSizes = {}, .bounds = {}};
  bomb.packedSizes.assign(1 << 10U, 1);
  EXPECT_EQ(open(std::string(1 << 10U, 'x') + encodeFrameTable(bomb)), nullptr);
  for (std::size_t at = file.size() - test::sizeOfTable(file); at < file.size(); ++at)
    EXPECT_EQ(open(test::flipped(file, at)), nullptr) << at;
  for (std::size_t cut = 1; cut < 300; ++cut)
    EXPECT_EQ(open(test::shrunk(file, cut)), nullptr) << cut;
}

TEST_F(Frames, OnlyWhatIsNeededIsUnpacked) {
  const auto store = open(file);
  const FrameStore::Use use(store);
  const Data data = FrameStore::contentOf(store);
  EXPECT_EQ(store->unpackedSize(), 0U);
  const struct {
    std::size_t offset, size, unpacked;
  } parts[] = {{5, 10, 1},
               {frameSize - 1, 1, 1},
               {frameSize - 1, 2, 2},
               {3 * frameSize, 0, 2},
               {3 * frameSize, frameSize, 3}};
  for (const auto& part : parts) {
    EXPECT_EQ(data.lazyBytes().part(part.offset, part.size),
              content.substr(part.offset, part.size));
    EXPECT_EQ(store->unpackedSize(), part.unpacked * frameSize);
  }
  EXPECT_EQ(data.lazyPart(content.size() - 5, 5).bytes(), content.substr(content.size() - 5));
  EXPECT_EQ(store->unpackedSize(), 3 * frameSize + 1000);
  EXPECT_EQ(data.bytes(), content);
  EXPECT_FALSE(store->isDamaged());
}

TEST_F(Frames, DamageIsFoundAndRemembered) {
  const FrameTable table = *test::tableOf(file);
  const std::size_t second = table.packedSizes[0];
  const std::string other = framed(numbers(frameSize - 1));
  const std::string damaged[] = {
      test::flipped(file, second),                              // its magic number
      test::flipped(file, second + 4),                          // what its header tells
      test::flipped(file, second + 100),                        // its blocks
      test::flipped(file, second + table.packedSizes[1] - 1)};  // its checksum
  for (const std::string& bytes : damaged) {
    const auto store = open(bytes);
    const FrameStore::Use use(store);
    const LazyBytes lazy = FrameStore::contentOf(store).lazyBytes();
    EXPECT_EQ(lazy.part(0, 10), content.substr(0, 10));
    EXPECT_FALSE(store->isDamaged());
    EXPECT_EQ(lazy.part(frameSize - 10, 20), "");
    EXPECT_TRUE(store->isDamaged());
    EXPECT_EQ(decompressFile(folder.path() / "file")->content.ok(), false);
  }
  // The file is cut while it is open.
  const auto store = open(file);
  const FrameStore::Use use(store);
  std::filesystem::resize_file(folder.path() / "file", second + 50);
  EXPECT_EQ(FrameStore::contentOf(store).lazyBytes().part(0, 10), content.substr(0, 10));
  EXPECT_EQ(FrameStore::contentOf(store).bytes(), "");
  EXPECT_TRUE(store->isDamaged());
}

TEST_F(Frames, WhatIsNotUsedIsGivenBack) {
  const auto store = open(file, 3 * frameSize);
  const LazyBytes lazy = FrameStore::contentOf(store).lazyBytes();
  const auto touch = [&](std::size_t frame) {
    const FrameStore::Use use(store);
    EXPECT_EQ(lazy.part(frame * frameSize, 5), content.substr(frame * frameSize, 5));
  };
  {
    const FrameStore::Use outer(store);
    const FrameStore::Use moved = [&store] { return FrameStore::Use(store); }();
    for (const std::size_t frame : {0U, 1U, 2U, 3U})
      touch(frame);
    EXPECT_EQ(store->unpackedSize(), 4 * frameSize);
    touch(0);
  }
  EXPECT_EQ(store->unpackedSize(), frameSize);
  touch(0);  // the one that stayed
  EXPECT_EQ(store->unpackedSize(), frameSize);
  const FrameStore::Use use(store);
  EXPECT_EQ(lazy.all(), content);
}

TEST_F(Frames, ManyThreadsAtOnce) {
  const auto store = open(file, frameSize);
  const LazyBytes lazy = FrameStore::contentOf(store).lazyBytes();
  std::vector<std::jthread> threads;
  for (unsigned seed = 0; seed < 4; ++seed) {
    threads.emplace_back([&, seed] {
      std::mt19937 random(seed);
      for (int round = 0; round < 200; ++round) {
        const FrameStore::Use use(store);
        const std::size_t offset = random() % content.size();
        EXPECT_TRUE(lazy.part(offset, frameSize) == content.substr(offset, frameSize));
      }
    });
  }
}

}  // namespace
}  // namespace quorvex
