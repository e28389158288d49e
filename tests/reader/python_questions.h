#pragma once

#include <array>
#include <string_view>

namespace quorvex::test {

/// A question that a reader of the Python documentation would ask, and the pages that answer it:
/// the answer is right when one of them comes first.
struct Question {
  std::string_view text;
  std::array<std::string_view, 2> pages;
};

// Written down before any answer was looked at.
inline constexpr std::array<Question, 20> pythonQuestions = {{
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

}  // namespace quorvex::test
