// Builds the semantic index of a retrieval test collection, asks its questions and prints how good
// the answers are.
//
//   relevance <folder>
//
// The folder holds docs.tsv (id, title, text), queries.tsv (id, text) and qrels.tsv (query id,
// document id), all in English. Printed are mean average precision over the first 1,000 answers
// and normalised discounted cumulative gain at 10 (Järvelin, Kekäläinen 2002), means over the
// questions that have relevant documents.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/docuvault/docuvault.h"

using namespace quorvex;

namespace {

using Row = std::vector<std::string>;

/// The file's lines, each cut at tabs into `fields` fields; missing ones are empty.
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

std::shared_ptr<HelpRDXIndex> indexOf(const std::vector<Row>& documents) {
  HelpRDXIndexBuilder builder(std::nullopt, "en");
  builder.addHelpArticles(documents.size(), 2, [&](std::size_t i) {
    const Row& document = documents[i];
    Dictionary properties;
    if (!document[1].empty()) properties.emplace(HelpDocPropertyTitle, document[1]);
    if (!document[2].empty()) properties.emplace(HelpDocPropertyContent, document[2]);
    return HelpArticle{std::move(properties), document[0]};
  });
  return builder.index();
}

double averagePrecision(const std::vector<HelpRDXAnswer>& answers,
                        const std::set<std::string>& relevant) {
  double sum = 0;
  double hits = 0;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    if (!relevant.contains(answers[i].subPath)) continue;
    hits += 1;
    sum += hits / static_cast<double>(i + 1);
  }
  return sum / static_cast<double>(relevant.size());
}

double discountedGainAtTen(const std::vector<HelpRDXAnswer>& answers,
                           const std::set<std::string>& relevant) {
  double gain = 0;
  double best = 0;
  for (std::size_t i = 0; i < 10; ++i) {
    const double discount = 1 / std::log2(static_cast<double>(i + 2));
    if (i < answers.size() && relevant.contains(answers[i].subPath)) gain += discount;
    if (i < relevant.size()) best += discount;
  }
  return gain / best;
}

void measure(const std::string& folder) {
  const std::vector<Row> documents = readTable(folder + "/docs.tsv", 3);
  const std::vector<Row> questions = readTable(folder + "/queries.tsv", 2);
  std::map<std::string, std::set<std::string>> relevantTo;
  for (const Row& row : readTable(folder + "/qrels.tsv", 2))
    relevantTo[row[0]].insert(row[1]);

  const std::shared_ptr<HelpRDXIndex> index = indexOf(documents);
  double precision = 0;
  double gain = 0;
  std::size_t asked = 0;
  for (const Row& question : questions) {
    const std::set<std::string>& relevant = relevantTo[question[0]];
    if (relevant.empty()) continue;
    const std::vector<HelpRDXAnswer> answers = index->articlesNearestToText(question[1], 1000);
    precision += averagePrecision(answers, relevant);
    gain += discountedGainAtTen(answers, relevant);
    ++asked;
  }
  const double count = static_cast<double>(std::max<std::size_t>(asked, 1));
  std::cout << index->description() << '\n';
  std::printf("questions: %zu\nMAP: %.3f\nnDCG@10: %.3f\n", asked, precision / count, gain / count);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: relevance <folder of docs.tsv, queries.tsv, qrels.tsv>\n";
    return 2;
  }
  measure(argv[1]);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "relevance: " << error.what() << '\n';
  return 1;
}
