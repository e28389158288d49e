// The lower bound of the indexer's times: reads each page of a folder and parses it once, on one
// thread, without using the tree. With --queries it also evaluates extraction's eight expressions
// with libxml2's engine, on the same tree.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include "common/files.h"
#include "extract/page_queries.h"

namespace {

std::vector<std::string> pages(const char* folder) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::string extension = entry.path().extension().string();
    if (entry.is_regular_file() && (extension == ".html" || extension == ".htm")) {
      paths.push_back(entry.path().string());
    }
  }
  std::ranges::sort(paths);
  return paths;
}

long ask(xmlDoc* document) {
  long nodes = 0;
  xmlXPathContext* context = xmlXPathNewContext(document);
  for (std::size_t i = 0; i < quorvex::pageQueryCount; ++i) {
    const std::string expression(quorvex::expressionOf(static_cast<quorvex::PageQuery>(i)));
    xmlXPathObject* result =
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context);
    if (result != nullptr && result->nodesetval != nullptr) nodes += result->nodesetval->nodeNr;
    xmlXPathFreeObject(result);
  }
  xmlXPathFreeContext(context);
  return nodes;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const bool queries = argumentCount == 3 && std::string_view(arguments[1]) == "--queries";
  if (argumentCount != 2 && !queries) {
    std::fprintf(stderr, "usage: floor [--queries] FOLDER\n");
    return 2;
  }
  long nodes = 0;
  std::size_t bytes = 0;
  const std::vector<std::string> paths = pages(arguments[argumentCount - 1]);
  for (const std::string& path : paths) {
    const auto contents = quorvex::readFile(path);
    if (!contents) continue;
    bytes += contents->size();
    xmlDoc* document = htmlReadMemory(contents->bytes().data(), static_cast<int>(contents->size()),
                                      "", nullptr, HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
    if (document != nullptr && queries) nodes += ask(document);
    xmlFreeDoc(document);
  }
  std::printf("%zu pages, %zu bytes, %ld nodes\n", paths.size(), bytes, nodes);
  return 0;
}
