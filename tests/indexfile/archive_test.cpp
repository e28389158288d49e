#include <random>

#include <gtest/gtest.h>

#include "tests/support/archives.h"
#include "tests/support/cbor_forms.h"
#include "tests/support/damage.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::compressed;
using test::fromHex;
using test::keyed;
using test::replaced;
using test::sequential;
using test::shrunk;
using test::toHex;

Dictionary sample() {
  return {{"KEYS", Dictionary{{"a", Array{"/x.html", "/y.html"}}}},
          {"DATA", Data("\x01\x02")},
          {"FLAG", true}};
}

TEST(KeyedArchive, ByteForm) {
  const std::string hex =
      "d9d9f7a3"
      "64726f6f746568656c6c6f"
      "6776657273696f6e01"
      "6861726368697665726f51584b657965644172636869766572";
  EXPECT_EQ(toHex(test::keyed(Value("hello"))), hex);
  EXPECT_EQ(*unarchiveKeyed(fromHex(hex), {"string"}), Value("hello"));
  EXPECT_FALSE(unarchiveKeyed(fromHex(hex), {"array"}).ok());
}

TEST(KeyedArchive, SurvivesAndRefusesWhatIsNotOne) {
  const std::string archive = keyed(sample());
  EXPECT_EQ(archive, keyed(Value(sample())));
  EXPECT_EQ(*unarchiveKeyed(archive, AllowedKinds::values()), Value(sample()));
  const std::string bad[] = {
      archive + "x",
      archive.substr(3),
      replaced(archive, "QXKeyedArchiver", "QXKeyedArchives"),
      replaced(archive, fromHex("6776657273696f6e01"), fromHex("6776657273696f6e02")),
      replaced(archive, "root", "toor"),
      replaced(archive, fromHex("d9d9f7a3"), fromHex("d9d9f7a2")),
      fromHex("d9d9f701"),
  };
  for (const std::string& bytes : bad) {
    EXPECT_FALSE(unarchiveKeyed(bytes, AllowedKinds::values()).ok()) << toHex(bytes);
  }
  const auto newer = unarchiveKeyed(bad[3], AllowedKinds::values());
  EXPECT_EQ(newer.error().description, "The archive has version 2; this program reads version 1");
  for (std::size_t cut = 1; cut <= archive.size(); ++cut) {
    EXPECT_FALSE(unarchiveKeyed(shrunk(archive, cut), AllowedKinds::values()).ok()) << cut;
  }
}

TEST(SequentialArchive, ByteForm) {
  EXPECT_EQ(sequential({{"DATA", Data("\x01\x02")}, {"A", true}}),
            "\x74QXSequentialArchiver\x01\x02\x61"
            "A\xF5\x64"
            "DATA\x42\x01\x02");
}

std::string mixedContent(std::size_t size) {
  std::string content(size, '\0');
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < size; ++i) {
    state = state * 1664525 + 1013904223;
    content[i] = static_cast<char>(i / 5000 % 2 == 0 ? state >> 24U : i >> 4U);
  }
  return content;
}

TEST(Compression, SameFrameHoweverTheContentIsCut) {
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 3'000'000U, 9'000'000U}) {
    const std::string content = mixedContent(size);
    const std::string frame = compressed(content, 1 << 30U);
    EXPECT_TRUE(frame == compressed(content, 977));
    const Result<Data> back = decompress(frame);
    ASSERT_TRUE(back.ok()) << back.error().description;
    EXPECT_TRUE(back->bytes() == content);
    const std::string large = compressed(content, 977, ReadingOrder::whole);
    EXPECT_TRUE(decompress(large)->bytes() == content);
  }
}

std::uint64_t fnv1a(std::string_view bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : bytes)
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

// The same book yields the same file with either Debian's zstd.
TEST(Compression, SameFrameOnEverySystem) {
  std::string text;
  std::uint32_t state = 1;
  while (text.size() < 5'000'000) {
    state = state * 1664525 + 1013904223;
    // A few numbers are frequent, like words; in places there are tables.
    const std::uint32_t number = (state >> 20U) * (state >> 20U) >> 13U;
    text += text.size() / 90'000 % 2 == 0 ? "word" + std::to_string(number) + ' '
                                          : std::string(1, static_cast<char>(number));
    if (state % 1000 == 0) text += text.substr(state % text.size(), 3000);
  }
  EXPECT_EQ(fnv1a(compressed(text)), 10670515568725082315U);
  EXPECT_EQ(fnv1a(compressed(text.substr(0, 30'000))), 5080222869207165921U);
  EXPECT_EQ(fnv1a(compressed(mixedContent(500'000))), 5393333202039686389U);
  EXPECT_EQ(fnv1a(compressed(text, text.size(), ReadingOrder::whole)), 11996741341164678367U);
}

TEST(Compression, AFileIsUnpackedAsItIsRead) {
  const test::TemporaryFolder folder;
  const std::string path = (folder.path() / "frame").string();
  const std::string content = mixedContent(6'000'000);
  const std::string frame = compressed(content, 1 << 20U);
  const auto unpacked = [&](const std::string& bytes) {
    folder.write("frame", bytes);
    const Result<Data> back = decompressFile(path)->content;
    return back ? std::string(back->bytes()) : back.error().description;
  };
  EXPECT_TRUE(unpacked(frame) == content);
  EXPECT_EQ(unpacked(frame + "x2345678"), "Unexpected data after the compressed data");
  EXPECT_EQ(unpacked(frame + "x"), "The data after the compressed data is truncated");
  EXPECT_EQ(unpacked(shrunk(frame, 1)), "The compressed data is truncated");
  EXPECT_EQ(unpacked(std::string(1 << 20U, 'x')), "Not compressed data");
  EXPECT_EQ(unpacked(""), "Not compressed data");
  EXPECT_FALSE(decompressFile(folder.path().string()));
}

TEST(Compression, WhatIsRefused) {
  const std::string frame = compressed(mixedContent(300), 300);
  for (std::size_t cut = 1; cut <= frame.size(); ++cut) {
    EXPECT_FALSE(decompress(shrunk(frame, cut)).ok()) << cut;
  }
  EXPECT_FALSE(decompress(frame + "x").ok());
  EXPECT_FALSE(decompress("plain text").ok());
  EXPECT_FALSE(decompress(test::flipped(frame, frame.size() - 1)).ok());  // its checksum
}

TEST(Compression, BombsStopAtTheLimit) {
  const std::string frame = compressed(test::repeated("x", 50'000'000), 1 << 20U);
  EXPECT_TRUE(decompress(frame, 50'000'000).ok());
  EXPECT_EQ(decompress(frame, 49'999'999).error().description, "Too large");
  // The same without a size in the header, in blocks of 100,000 times "x".
  const std::string block = fromHex("020d0c78");
  const std::string unsized = fromHex("28b52ffd 00 58") + test::repeated(block, 1000);
  EXPECT_EQ(decompress(unsized, 1'000'000).error().description, "Too large");
}

TEST(Compression, ARepetitiveContentIsPadded) {
  const std::string content = test::repeated("0123456789", 10'000'000);
  const std::string frame = compressed(content, 1 << 20U);
  const Result<Data> back = decompress(frame);
  EXPECT_TRUE(back && back->bytes() == content);
  EXPECT_FALSE(decompress(frame + "x"));
  EXPECT_FALSE(decompress(shrunk(frame, 1), content.size()));
  EXPECT_FALSE(decompress(compressed("x", 1) + "x2345678", content.size()));
}

TEST(Compression, FramesOfAnySizeMayFollowEachOther) {
  const std::string frame = compressed(mixedContent(300));
  const std::string skipped = fromHex("502a4d18 03000000 616263");
  const std::string twice = mixedContent(300) + mixedContent(300);
  EXPECT_EQ(decompress(frame + frame)->bytes(), twice);
  EXPECT_EQ(decompress(frame + frame + skipped + skipped)->bytes(), twice);
  EXPECT_FALSE(decompress(frame + skipped + frame).ok());
  EXPECT_FALSE(decompress(frame + shrunk(frame, 1)).ok());
  // A file is read in pieces of 64 KiB, which may end within the magic number of a frame.
  const test::TemporaryFolder folder;
  std::mt19937 random;
  std::string noise(65'536, '\0');
  for (char& byte : noise)
    byte = static_cast<char>(random());
  const std::size_t around = compressed(noise).size() - noise.size();
  for (std::size_t left = 0; left < 6; ++left) {
    const std::string part = noise.substr(0, 65'536 - around - left);
    folder.write("frames", compressed(part) + frame + frame + skipped);
    const auto back = decompressFile((folder.path() / "frames").string());
    EXPECT_TRUE(back->content && back->content->bytes() == part + twice) << left;
  }
}

TEST(Compression, AClaimThatIsALie) {
  // A frame that claims 7 GiB with one byte in its last block; then one that claims less than it
  // contains.
  EXPECT_FALSE(decompress(fromHex("28b52ffd e0 000000c001000000 090000 78")).ok());
  EXPECT_FALSE(decompress(fromHex("28b52ffd e0 ffffffffffffff7f 090000 78")).ok());
  EXPECT_FALSE(decompress(fromHex("28b52ffd 20 01 110000 7878")).ok());
  EXPECT_TRUE(decompress(fromHex("28b52ffd 20 02 110000 7878")).ok());
}

TEST(Compression, WhatWasAnnouncedMustCome) {
  Compressor less(10, [](std::string_view) { return true; });
  EXPECT_TRUE(less.write("12345"));
  EXPECT_FALSE(less.finish().ok());
  Compressor more(1, [](std::string_view) { return true; });
  EXPECT_FALSE(more.write("12345") && more.finish().ok());
  Compressor stopped(5, [](std::string_view) { return false; });
  EXPECT_FALSE(stopped.write("12345") && stopped.finish().ok());
}

}  // namespace
}  // namespace quorvex
