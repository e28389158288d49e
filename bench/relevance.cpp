// Builds the full-text and the semantic index of a retrieval test collection, runs its questions on
// each and on both together, and prints the quality of the answers.
//
//   relevance <folder>...
//
// A folder contains docs.tsv (id, title, text), queries.tsv (id, text) and qrels.tsv (query id,
// document id), all in English. As on a help page, the title precedes the text. Prints mean average
// precision over the first 1,000 answers and normalised discounted cumulative gain at 10 (Järvelin,
// Kekäläinen 2002), averaged over the questions that have relevant documents and, for several
// collections, over the collections.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/docuvault.h"
#include "platform/textsift.h"
#include "reader/fusion.h"

using namespace quorvex;

namespace {

using Row = std::vector<std::string>;

/// The file's lines, each split at tabs into `fields` fields; missing ones are empty.
std::vector<Row> readTable(const std::string& path, std::size_t fields) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<Row> rows;
  for (std::string line; std::getline(file, line);) {
    Row row;
    std::size_t begin = 0;
    while (row.size() + 1 < fields) {
      const std::size_t tab = line.find('\t', begin);
      if (tab == std::string::npos) break;
      row.push_back(line.substr(begin, tab - begin));
      begin = tab + 1;
    }
    row.push_back(line.substr(begin));
    row.resize(fields);
    rows.push_back(std::move(row));
  }
  return rows;
}

/// Document numbers, best first.
using Ranking = std::vector<reader::ScoredPage>;
using Relevant = std::set<std::size_t>;

constexpr std::size_t depth = 1000;

/// The indexes of one collection.
class Collection {
 public:
  explicit Collection(const std::vector<Row>& documents) {
    makeFullText(documents);
    HelpRDXIndexBuilder builder(std::nullopt, "en");
    builder.addHelpArticles(documents.size(), 2, [&](std::size_t i) {
      const Row& document = documents[i];
      Dictionary properties;
      if (!document[1].empty()) properties.emplace(HelpDocPropertyTitle, document[1]);
      if (!document[2].empty()) properties.emplace(HelpDocPropertyContent, document[2]);
      return HelpArticle{std::move(properties), document[0]};
    });
    _semantic = builder.index();
  }

  std::string description() const { return _semantic->description(); }

  /// Sets `wordCount` and `coverage` to the question's.
  Ranking byWords(const std::string& question, std::size_t& wordCount, double& coverage) const {
    const TSSearchOptions options = {.language = "en", .isPlainText = true};
    const TSSearchAnswer answer = TSSearchFindDocuments(_fullText, question, options, depth);
    wordCount = answer.wordCount;
    coverage = answer.coverage;
    Ranking ranking;
    for (const TSSearchHit& hit : answer.hits)
      ranking.push_back({hit.document, hit.score});
    return ranking;
  }

  Ranking byMeaning(const std::string& question) const {
    Ranking ranking;
    for (const HelpRDXAnswer& answer : _semantic->articlesNearestToText(question, depth))
      ranking.push_back({answer.article, answer.similarity});
    return ranking;
  }

 private:
  void makeFullText(const std::vector<Row>& documents) {
    const auto buffer = std::make_shared<std::string>();
    const TSIndexRef index = TSIndexCreateWithMutableData(
        buffer, std::nullopt, TSIndexType::inverted,
        {{std::string(kTSMinTermLength), 1}, {std::string(kTSTermChars), contractionMarks}});
    for (std::size_t i = 0; i < documents.size(); ++i) {
      const Row& document = documents[i];
      const auto page = TSDocumentCreateWithURL(*URL::fileURL("/" + std::to_string(i)));
      TSIndexAddDocumentWithText(index, page, document[1] + "\n" + document[2], false);
      TSIndexSetDocumentProperties(index, page, {{std::string(titleProperty), document[1]}});
    }
    TSIndexClose(index);
    _fullText = TSSearchCreateWithIndex(TSIndexOpenWithData(Data(*buffer), std::nullopt));
  }

  TSSearchRef _fullText;
  std::shared_ptr<HelpRDXIndex> _semantic;
};

struct Measures {
  double precision = 0;
  double gain = 0;

  void add(double morePrecision, double moreGain) {
    precision += morePrecision;
    gain += moreGain;
  }
  Measures dividedBy(std::size_t count) const {
    const double divisor = static_cast<double>(std::max<std::size_t>(count, 1));
    return {precision / divisor, gain / divisor};
  }
};

/// Full text, semantic, both.
using Table = std::array<Measures, 3>;
constexpr std::array<const char*, 3> rowNames = {"full text", "semantic", "both"};

void print(const Table& table) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    std::printf("%-10s MAP %.3f   nDCG@10 %.3f\n", rowNames[i], table[i].precision, table[i].gain);
  }
}

double averagePrecision(const Ranking& ranking, const Relevant& relevant) {
  double sum = 0;
  double hits = 0;
  for (std::size_t i = 0; i < std::min(depth, ranking.size()); ++i) {
    if (!relevant.contains(ranking[i].page)) continue;
    hits += 1;
    sum += hits / static_cast<double>(i + 1);
  }
  return sum / static_cast<double>(relevant.size());
}

double discountedGainAtTen(const Ranking& ranking, const Relevant& relevant) {
  double gain = 0;
  double best = 0;
  for (std::size_t i = 0; i < 10; ++i) {
    const double discount = 1 / std::log2(static_cast<double>(i + 2));
    if (i < ranking.size() && relevant.contains(ranking[i].page)) gain += discount;
    if (i < relevant.size()) best += discount;
  }
  return gain / best;
}

Table measure(const std::string& folder) {
  const std::vector<Row> documents = readTable(folder + "/docs.tsv", 3);
  std::map<std::string, std::size_t> numbers;
  for (std::size_t i = 0; i < documents.size(); ++i)
    numbers.emplace(documents[i][0], i);
  // A missing relevant document counts as never found.
  std::map<std::string, Relevant> relevantTo;
  std::size_t missing = documents.size();
  for (const Row& row : readTable(folder + "/qrels.tsv", 2)) {
    const auto number = numbers.find(row[1]);
    relevantTo[row[0]].insert(number == numbers.end() ? missing++ : number->second);
  }

  const Collection collection(documents);
  std::cout << folder << '\n' << collection.description() << '\n';
  Table sums;
  std::size_t asked = 0;
  for (const Row& question : readTable(folder + "/queries.tsv", 2)) {
    const Relevant& relevant = relevantTo[question[0]];
    if (relevant.empty()) continue;
    std::size_t wordCount = 0;
    double coverage = 0;
    const Ranking words = collection.byWords(question[1], wordCount, coverage);
    const Ranking meaning = collection.byMeaning(question[1]);
    const std::array<Ranking, 3> rankings = {
        words, meaning, reader::fuse(words, meaning, reader::semanticPart(wordCount, coverage))};
    for (std::size_t i = 0; i < rankings.size(); ++i) {
      sums[i].add(averagePrecision(rankings[i], relevant),
                  discountedGainAtTen(rankings[i], relevant));
    }
    ++asked;
  }
  for (Measures& row : sums)
    row = row.dividedBy(asked);
  std::cout << "questions: " << asked << '\n';
  print(sums);
  return sums;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2) {
    std::cerr << "usage: relevance <folder of docs.tsv, queries.tsv, qrels.tsv>...\n";
    return 2;
  }
  Table means;
  const std::span<char*> folders(argv + 1, static_cast<std::size_t>(argc - 1));
  for (const char* folder : folders) {
    const Table table = measure(folder);
    for (std::size_t i = 0; i < table.size(); ++i)
      means[i].add(table[i].precision, table[i].gain);
  }
  if (folders.size() == 1) return 0;
  for (Measures& row : means)
    row = row.dividedBy(folders.size());
  std::cout << "mean of " << folders.size() << " collections\n";
  print(means);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "relevance: " << error.what() << '\n';
  return 1;
}
