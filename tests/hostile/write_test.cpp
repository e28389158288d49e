// Whatever happens while writing an index file, its path then has the old file or the new one, with
// nothing left beside it. Lost output is always reported.

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/private_desktop.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;

class WriteFault : public testing::Test {
 protected:
  WriteFault() {
    // Incompressible data takes long to write.
    std::mt19937_64 random(3);
    for (int i = 0; i < 40; ++i) {
      std::string words;
      for (int word = 0; word < 2000; ++word)
        words += std::to_string(random()) + ' ';
      book.write("page" + std::to_string(i) + ".html", "<title>t</title><body>" + words);
    }
    EXPECT_EQ(test::ProgramRun(out.path(), create("index")).end().status, 0);
    newFile = index();
    out.write("index", oldFile);
  }

  std::vector<std::string> create(const std::string& name) const {
    return {QUORVEX_PROGRAM, "-Cvv", "-I", "beacon", "-f", name, book.path()};
  }
  std::string index() const { return std::string(readFile(out.path() / "index")->bytes()); }
  std::ptrdiff_t entries() const {
    return std::distance(fs::directory_iterator(out.path()), fs::directory_iterator());
  }

  test::TemporaryFolder book;
  test::TemporaryFolder out;
  const std::string oldFile = "old";
  std::string newFile;
};

TEST_F(WriteFault, NoRoom) {
  for (const std::size_t blocks : {0UL, 1UL, newFile.size() / 1024, newFile.size() / 512}) {
    // The thread sanitizer writes a file before the program can ignore the signal.
    const std::string limit =
        (test::limitsHold ? "" : "trap '' XFSZ; ") + ("ulimit -f " + std::to_string(blocks));
    EXPECT_EQ(test::ProgramRun(out.path(), create("index"), limit).end().status, 0) << blocks;
    EXPECT_EQ(index(), oldFile);
    EXPECT_EQ(entries(), 1);
  }
  // Not even root can create files there.
  EXPECT_EQ(test::ProgramRun(out.path(), create("/proc/index")).end().errors,
            "Error writing out generated index to path </proc/index>\n");
}

TEST_F(WriteFault, NoMemory) {
  if (!test::limitsHold) return;
  const test::PrivateDesktop desktop;
  std::vector<std::string> words = create("index");
  words.insert(words.begin(), {"timeout", "20"});
  // From barely enough memory to load the program to enough for everything.
  for (int limit = 60'000; limit <= 240'000; limit += 5'000) {
    words[3] = limit % 10'000 == 0 ? "-Cvvn" : "-Cvv";
    const test::Ended made =
        test::ProgramRun(out.path(), words, "ulimit -v " + std::to_string(limit)).end();
    const bool done = made.status == 0;
    EXPECT_TRUE(done || made.status == 71 || made.status == 127) << limit << ": " << made.status;
    EXPECT_EQ(entries(), 1) << limit;
    // Either the new file, or the old one and a message. Only the loader prints before the program.
    const bool told = made.errors.ends_with("Not enough memory\n") || made.status == 127;
    EXPECT_TRUE(done && !told ? index() == newFile : index() == oldFile && told) << limit;
    out.write("index", oldFile);
  }
}

TEST_F(WriteFault, SignalsAtAnyMoment) {
  std::mt19937 random(11);
  for (int round = 0; round < 24; ++round) {
    static constexpr std::array signals{SIGKILL, SIGTERM, SIGQUIT, SIGINT, SIGXCPU, SIGUSR1};
    const int signal = signals[static_cast<std::size_t>(round / 2) % signals.size()];
    test::ProgramRun run(out.path(), create("index"), "ulimit -c 0");
    // Half of the rounds hit the writing itself.
    for (int i = 0; round % 2 == 0 && i < 100'000 && entries() == 1 && index() == oldFile; ++i)
      ::usleep(100);
    ::usleep(static_cast<useconds_t>(random() % (round % 2 == 0 ? 5'000 : 200'000)));
    run.send(signal);
    const int status = run.end().status;
    EXPECT_TRUE(status == 0 || status == -signal) << status;
    EXPECT_TRUE(index() == newFile || (status != 0 && index() == oldFile));
    // Only a killed run leaves its file, under a name that cannot be taken for an index.
    EXPECT_TRUE(signal == SIGKILL || entries() == 1) << "after signal " << signal;
    for (const auto& entry : fs::directory_iterator(out.path())) {
      const std::string name = entry.path().filename();
      EXPECT_TRUE(name == "index" || name.starts_with(".quorvex-")) << name;
      if (name != "index") fs::remove(entry.path());
    }
    out.write("index", oldFile);
  }
}

TEST_F(WriteFault, TheFolderGoesAway) {
  const std::string path = out.path() / "folder";
  test::Ended made{};
  // Repeated if the run ended before this process was scheduled.
  for (int round = 0; made.errors.empty() && round < 20; ++round) {
    fs::remove_all(path);
    fs::create_directory(path);
    test::ProgramRun run(out.path(), create(path + "/index"));
    for (int i = 0; fs::is_empty(path) && i < 100'000; ++i)
      ::usleep(100);
    std::error_code ignored;
    fs::remove_all(path, ignored);
    made = run.end();
    EXPECT_EQ(made.status, 0);
  }
  EXPECT_EQ(made.errors, "Error writing out generated index to path <" + path + "/index>\n");
  EXPECT_EQ(entries(), 1);
}

TEST_F(WriteFault, StandardOutputTakesNothing) {
  out.write("index", newFile);
  const std::vector<std::pair<std::string, int>> programs = {
      {QUORVEX_PROGRAM " -F -I beacon -f index", 0},
      {QUORVEX_PROGRAM " -D -I beacon -f index", 0},
      {QUORVEX_SEARCH_PROGRAM " index t", 4},
      {QUORVEX_PROGRESS_PROGRAM " --help", 4},
  };
  for (const auto& [program, status] : programs) {
    for (const std::string where : {">/dev/full", ">&-"}) {
      const test::Ended ended =
          test::ProgramRun(out.path(), {"/bin/sh", "-c", program + where}).end();
      EXPECT_EQ(ended.status, status) << program;
      EXPECT_NE(ended.errors.find("Cannot write to standard output: "), std::string::npos);
      EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1) << ended.errors;
    }
  }
  const std::string gone = "trap '' PIPE; (sleep 0.1; exec " + programs[1].first + ") | true";
  EXPECT_EQ(test::ProgramRun(out.path(), {"/bin/sh", "-c", gone}).end().errors, "");
}

}  // namespace
}  // namespace quorvex
