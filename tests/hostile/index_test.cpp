// Index files that no writer made, through both programs: each is rejected or shows only its
// contents, within a second and 256 MiB.

#include <random>

#include <gtest/gtest.h>
#include <zstd.h>

#include "common/bytes.h"
#include "fulltext/format/index_format.h"
#include "platform/searchable_item.h"
#include "platform/textsift.h"
#include "tests/support/archives.h"
#include "tests/support/damage.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

using test::compressed;
using test::repeated;

/// Returns frames without the padding that our writer would add.
std::string bomb(std::string_view content) {
  std::string frames = compressed(content);
  std::size_t size = 0;
  while (size < frames.size() && ByteReader(frames.substr(size, 4)).u32() == ZSTD_MAGICNUMBER)
    size += ZSTD_findFrameCompressedSize(frames.data() + size, frames.size() - size);
  frames.resize(size);
  return frames;
}

/// Frames an archive of the map { key: item }, with the item given in bytes.
std::string frameOf(const std::string& item, const std::string& key = "anything") {
  return bomb("\xD9\xD9\xF7\xA3\x64root\xA1" + std::string(1, char(0x60 + key.size())) + key +
              item + "\x67version\x01\x68" + "archiver\x6FQXKeyedArchiver");
}

std::string head(unsigned char major, std::uint64_t size) {
  std::string bytes(1, static_cast<char>(unsigned{major} << 5U | 27U));
  for (int shift = 56; shift >= 0; shift -= 8)
    bytes += static_cast<char>(size >> static_cast<unsigned>(shift));
  return bytes;
}

class HostileIndex : public testing::Test {
 protected:
  /// Returns a program's messages about "index"; `mustRefuse`: expects rejection as unreadable.
  std::string read(const std::vector<std::string>& words, bool mustRefuse) const {
    const int refused = words.front() == QUORVEX_PROGRAM ? 4 : 3;
    const test::Ended ended =
        test::ProgramRun(folder.path(), words, test::limitsHold ? "ulimit -v 262144" : ":").end();
    EXPECT_TRUE(ended.status == refused ||
                (!mustRefuse && ended.status >= 0 && ended.status < refused))
        << ended.status << ended.errors;
    EXPECT_LT(ended.seconds, test::limitsHold ? mostSeconds : 20);
    return ended.errors;
  }
  /// `reason`: why it must be rejected, if so, other than memory shortage.
  void readBoth(const std::string& reason, const std::string& mode = "-Fv",
                const std::string& format = "lsm") const {
    read({QUORVEX_PROGRAM, mode, "-I", format, "-f", "index"}, !reason.empty());
    const std::string said =
        read({QUORVEX_SEARCH_PROGRAM, "index", "harbour boat"}, !reason.empty());
    EXPECT_NE(said.find(reason), std::string::npos) << said;
  }

  test::TemporaryFolder folder;
  double mostSeconds = 1;
};

TEST_F(HostileIndex, BombsAreRefused) {
  constexpr std::size_t million = 1'000'000;
  const std::string items = "BC_INDEXABLE_ITEMS";
  const std::string other = "not an index file";
  for (const auto& [file, reason] : std::initializer_list<std::pair<std::string, std::string>>{
           {frameOf(head(2, 200 * million) + std::string(200 * million, '\0')), "Too large"},
           {frameOf(head(4, 20 * million) + std::string(20 * million, '\x60'), items),
            "Too many items"},
           {frameOf(repeated("\x81", 10 * million), items), other},
           {frameOf(head(4, UINT64_MAX) + "\x01"), other},
           {frameOf(head(5, 1U << 30U) + "\x61x\x01", items), other},
           {frameOf(head(3, UINT64_MAX - 8) + "text"), other},
           {frameOf("\x81\xD8\x1B\x82\x66System\xA1\x61x\x01", items),
            "class System is not allowed"},
           {bomb(std::string(200 * million, '\0')), "Too large"}}) {
    folder.write("index", file);
    readBoth(reason);
  }
}

TEST_F(HostileIndex, LargeFilesOfNothingAreRefused) {
  const std::filesystem::path file = folder.path() / "index";
  folder.write("index", "\x28\xB5\x2F\xFD");
  std::filesystem::resize_file(file, std::uintmax_t{3} << 30U);
  readBoth("File too large");
  folder.write("index", "other");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 30U);
  readBoth("Not compressed data");
}

TEST_F(HostileIndex, MillionsOfDocuments) {
  constexpr std::size_t count = 5'000'000;
  mostSeconds = 3;  // listing them takes two thirds of one on an idle machine
  const auto buffer = std::make_shared<std::string>();
  TSIndexClose(TSIndexCreateWithMutableData(buffer, std::nullopt, TSIndexType::inverted, {}));
  const std::vector<std::string> healthy = takeApart(*buffer, indexContainer).value();
  for (const char distance : {'\0', '\1'}) {  // beside each other, below each other
    std::vector<std::string> sections = healthy;
    std::string& documents = sections[static_cast<std::size_t>(IndexSection::documents) - 1];
    documents.clear();
    appendVarint(documents, count);
    documents += std::string(9 * count, '\0') + '\0' + std::string(count - 1, distance);
    std::string index;
    assembleContainer(indexContainer, sections, index);
    folder.write("index", compressed(test::keyed(Dictionary{{"TSI_INDEX_DATA", Data(index)}})));
    readBoth("");
  }
}

TEST_F(HostileIndex, DamageThatTheChecksumOfTheFileDoesNotShow) {
  // Damaged inside the frame, so that every reader behind it sees the damage.
  static constexpr std::array modes{"-Fv", "-Av", "-Ev", "-Dv", "-Mv", "-Sv", "-Tv"};
  std::mt19937 random(7);
  Dictionary sections;
  for (const std::string format : {"lsm", "beacon"}) {
    read({QUORVEX_PROGRAM, "-Ca", "-I", format, "-f", "index",
          QUORVEX_SOURCE_DIR "/examples/larkfield/en.lproj"},
         false);
    const Data archive = decompress(readFile(folder.path() / "index")->bytes()).value();
    sections.merge(*unarchiveKeyed(archive, valuesAndSearchableItems())->dictionary());
    for (int round = 0; round < (test::limitsHold ? 40 : 10); ++round) {
      std::string damaged(archive.bytes());
      for (auto left = 1 + random() % 3; left > 0; --left) {
        // Half of the damage is near the front, in the values that frame the others.
        const std::size_t end = random() % 2 == 0 ? 200 : damaged.size();
        damaged = test::flipped(damaged, random() % end, static_cast<unsigned char>(random()));
      }
      if (round % 4 == 0) damaged.resize(random() % damaged.size());
      folder.write("index", compressed(damaged));
      readBoth("", modes[static_cast<std::size_t>(round) % modes.size()], format);
    }
  }
  // Swaps every pair of entries of both forms.
  for (auto one = sections.begin(); one != sections.end(); ++one) {
    for (auto two = std::next(one); two != sections.end(); ++two) {
      std::swap(one->second, two->second);
      folder.write("index", compressed(test::keyed(sections)));
      read({QUORVEX_PROGRAM, "-Av", "-I", "lsm", "-f", "index"}, false);
      read({QUORVEX_PROGRAM, "-Tv", "-I", "beacon", "-f", "index"}, false);
      readBoth("");
      std::swap(one->second, two->second);
    }
  }
}

}  // namespace
}  // namespace quorvex
