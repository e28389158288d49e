// Google Benchmark cases for the parts where a run spends its time, over the pages of a folder:
// BOOK in the environment, else the example book. Rates are bytes of page or text per second.

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "common/files.h"
#include "extract/parse_document_operation.h"
#include "generate/semantic_index.h"
#include "indexfile/keys.h"
#include "platform/compression.h"
#include "platform/keyed_archive.h"
#include "platform/textsift.h"
#include "sources/indexable_directory.h"
#include "text/tokenizer.h"

namespace quorvex {
namespace {

struct Book {
  std::vector<std::pair<std::string, Data>> pages;
  std::vector<std::shared_ptr<QXParsedDocument>> documents;
  std::int64_t pageBytes = 0;
  std::int64_t textBytes = 0;
};

std::shared_ptr<QXParsedDocument> parsed(const std::string& path, const Data& page) {
  const IndexSettings settings;
  QXParseDocumentOperation operation(page, path, 2, settings);
  operation.main();
  return operation.primaryDocument();
}

const Book& book() {
  static const Book book = [] {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before any thread starts
    const char* folder = std::getenv("BOOK");
    const std::string path = folder != nullptr ? folder : QUORVEX_SOURCE_DIR "/examples";
    QXIndexableDirectory source(*URL::parse(percentEncodePath(path)));
    const Predicate isPage = *source.defaultIncludePredicate();
    Book loaded;
    for (const std::string& subpath : source.subpaths().value_or(std::vector<std::string>())) {
      if (!*isPage.evaluate(subpath)) continue;
      std::optional<Data> contents = source.contentsOfSubpath(subpath);
      if (!contents) continue;
      loaded.documents.push_back(parsed(subpath, *contents));
      loaded.pageBytes += static_cast<std::int64_t>(contents->size());
      loaded.textBytes += static_cast<std::int64_t>(loaded.documents.back()->content().size());
      loaded.pages.emplace_back(subpath, *std::move(contents));
    }
    return loaded;
  }();
  return book;
}

Data fullTextIndex() {
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef index =
      TSIndexCreateWithMutableData(buffer, std::nullopt, TSIndexType::inverted, {});
  std::vector<TSDocumentRef> references;
  for (const auto& document : book().documents) {
    references.push_back(TSDocumentCreateWithURL(*URL::fileURL(document->absolutePath())));
  }
  TSIndexAddDocuments(index, references, false, 1, [](std::size_t i) {
    return TSDocumentContent{book().documents[i]->content(), {}};
  });
  TSIndexClose(index);
  return Data(std::move(*buffer));
}

void extraction(benchmark::State& state) {
  for (auto _ : state) {
    for (const auto& [path, page] : book().pages)
      benchmark::DoNotOptimize(parsed(path, page));
  }
  state.SetBytesProcessed(state.iterations() * book().pageBytes);
}
BENCHMARK(extraction)->Unit(benchmark::kMillisecond);

void tokenizer(benchmark::State& state) {
  Tokenizer words("'");
  Token token;
  for (auto _ : state) {
    for (const auto& document : book().documents) {
      words.reset(document->content());
      while (words.next(token))
        benchmark::DoNotOptimize(token);
    }
  }
  state.SetBytesProcessed(state.iterations() * book().textBytes);
}
BENCHMARK(tokenizer)->Unit(benchmark::kMillisecond);

void fullTextBuild(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(fullTextIndex());
  state.SetBytesProcessed(state.iterations() * book().textBytes);
}
BENCHMARK(fullTextBuild)->Unit(benchmark::kMillisecond);

void semanticBuild(benchmark::State& state) {
  IndexSettings settings;
  settings.indexLocale = Locale::withIdentifier("en");
  for (auto _ : state)
    benchmark::DoNotOptimize(createSemanticIndex(book().documents, settings, {}));
  state.SetBytesProcessed(state.iterations() * book().textBytes);
}
BENCHMARK(semanticBuild)->Unit(benchmark::kMillisecond);

void summaries(benchmark::State& state) {
  for (auto _ : state) {
    for (const auto& document : book().documents) {
      benchmark::DoNotOptimize(TSSummaryCreateWithString(document->content()));
    }
  }
  state.SetBytesProcessed(state.iterations() * book().textBytes);
}
BENCHMARK(summaries)->Unit(benchmark::kMillisecond);

void fullTextOpen(benchmark::State& state) {
  const Data data = fullTextIndex();
  for (auto _ : state)
    benchmark::DoNotOptimize(TSIndexOpenWithData(data, std::nullopt));
}
BENCHMARK(fullTextOpen)->Unit(benchmark::kMicrosecond);

void archiveAndCompress(benchmark::State& state) {
  const Dictionary index = {{std::string(fullTextIndexKey), fullTextIndex()}};
  const std::size_t size = find(index, fullTextIndexKey)->data()->size();
  for (auto _ : state) {
    std::string archive;
    const Status archived = archiveKeyed(index, [&archive](std::string_view piece) {
      archive += piece;
      return true;
    });
    Compressor compressor(archive.size(), [](std::string_view) { return true; });
    benchmark::DoNotOptimize(archived.ok() && compressor.write(archive) && compressor.finish());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(archiveAndCompress)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex

BENCHMARK_MAIN();
