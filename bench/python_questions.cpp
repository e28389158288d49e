// Asks an index of the Python documentation its readers' typical questions, and prints the rank of
// the first right answer (0: not in the first ten) before each question.
//
//   python_questions <index file>

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

#include "quorvex/help_index.h"

using namespace quorvex;

namespace {

/// A question that a reader of the Python documentation would ask, and the pages that answer it:
/// the answer is right when one of them comes first.
struct Question {
  std::string_view text;
  std::array<std::string_view, 2> pages;
};

// Written before looking at any answer.
constexpr std::array<Question, 20> questions = {{
    {"how do I sort a list", {"/howto/sorting.html"}},
    {"read and write csv files", {"/library/csv.html"}},
    {"parse command line arguments", {"/library/argparse.html", "/howto/argparse.html"}},
    {"regular expression syntax", {"/library/re.html", "/howto/regex.html"}},
    {"create a virtual environment", {"/library/venv.html", "/tutorial/venv.html"}},
    {"asyncio event loop", {"/library/asyncio-eventloop.html"}},
    {"start a subprocess and capture its output",
     {"/library/subprocess.html", "/library/asyncio-subprocess.html"}},
    {"extending python with C", {"/extending/extending.html", "/extending/index.html"}},
    {"context manager utilities", {"/library/contextlib.html"}},
    {"logging to a file from several modules",
     {"/howto/logging-cookbook.html", "/howto/logging.html"}},
    {"compress a file with gzip", {"/library/gzip.html"}},
    {"connect to an sqlite database", {"/library/sqlite3.html"}},
    {"mock objects in unit tests",
     {"/library/unittest.mock.html", "/library/unittest.mock-examples.html"}},
    {"measure execution time of small code snippets", {"/library/timeit.html"}},
    {"what's new in python 3.10", {"/whatsnew/3.10.html"}},
    {"install packages with pip", {"/installing/index.html"}},
    {"why are floating point calculations inaccurate",
     {"/tutorial/floatingpoint.html", "/faq/design.html"}},
    {"send email over smtp", {"/library/smtplib.html", "/library/email.examples.html"}},
    {"temporary files and directories", {"/library/tempfile.html"}},
    {"encode and decode json", {"/library/json.html"}},
}};

}  // namespace

int main(int argc, char** argv) {
  const auto index = HelpIndex::open(argc == 2 ? argv[1] : "");
  if (!index) {
    std::cerr << "python_questions: " << index.failure().message << '\n';
    return 2;
  }
  std::size_t answered = 0;
  for (const Question& question : questions) {
    const auto result = index->search(question.text, {.isPlainText = true});
    if (!result) return 1;
    const auto hit = std::ranges::find_if(result->hits, [&](const Hit& candidate) {
      return std::ranges::count(question.pages, candidate.page.path) > 0;
    });
    const auto place = hit == result->hits.end() ? 0 : hit - result->hits.begin() + 1;
    if (place == 1) ++answered;
    std::cout << place << "  " << question.text << '\n';
  }
  std::cout << answered << " of " << questions.size() << " are answered by the first page\n";
}
