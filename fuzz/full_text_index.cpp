// Passes a full-text index through every read operation; any other bytes are a query. The mutator
// changes one section and reassembles the index with valid table and checksums.

#include "common/unicode.h"
#include "fulltext/format/index_format.h"
#include "fulltext/reading/index_reader.h"
#include "fuzz/driver.h"
#include "platform/textsift.h"

using namespace quorvex;
using fuzz::require;

namespace {

TSSearchRef smallIndex() {
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef index = TSIndexCreateWithMutableData(
      buffer, std::nullopt, TSIndexType::inverted, {{std::string(kTSStopWords), Array{"the"}}});
  for (int i = 0; i < 20; ++i) {
    const TSDocumentRef document = TSDocumentCreateWithURL(*URL::fileURL("/" + std::to_string(i)));
    const std::string text =
        "the common word" + std::to_string(i) + (i % 3 == 0 ? " ->> a[i]++" : " := ?");
    TSIndexAddDocuments(index, {document}, false, 1, [&](std::size_t) {
      const std::string name = "c" + std::to_string(i % 7) + ".word";
      return TSDocumentContent{
          text,
          {{"T", text}, {"D", "words"}},
          TSPlacesCreate(std::vector<TSPlace>{
              {0, "top", 2, "Common words", {{"Common words", TSNameKind::heading}}},
              {11, name, 7, name, {{name, TSNameKind::definition}}},
              {15, "", 7, "", {}}}),
          TSPageTraits{.linkShare = 9, .codeShare = 7, .language = "en"}};
    });
  }
  TSIndexClose(index);
  return TSSearchCreateWithIndex(TSIndexOpenWithData(Data(*buffer), std::nullopt));
}

void listDocuments(const TSIndexRef& index) {
  std::vector<std::shared_ptr<TSDocumentIterator>> road;
  road.push_back(TSIndexDocumentIteratorCreate(index, nullptr));
  while (!road.empty()) {
    const TSDocumentRef document = TSIndexDocumentIteratorCopyNext(road.back());
    if (document == nullptr) {
      road.pop_back();
      continue;
    }
    TSDocumentCopyURL(document);
    TSIndexCopyDocumentProperties(index, document);
    const TSDocumentID id = TSIndexGetDocumentID(index, document).value();
    for (const TSTermID term : TSIndexCopyTermIDArrayForDocumentID(index, id))
      TSIndexCopyTermStringForTermID(index, term);
    road.push_back(TSIndexDocumentIteratorCreate(index, document));
  }
}

void readDirectly(const IndexReader& reader) {
  const std::uint32_t documents = reader.documents().size();
  for (TermDictionary::Cursor cursor(reader.terms(), 0); cursor.next();) {
    for (PostingCursor posting = reader.postings(cursor.entry()); posting.next();) {
      require(posting.document() < documents);
    }
  }
  for (TermDictionary::Cursor cursor(reader.operators(), 0); cursor.next();) {
    for (PostingCursor posting = reader.operatorPostings(cursor.entry()); posting.next();)
      require(posting.document() < documents);
  }
  for (std::uint32_t id = 0; id < documents; ++id)
    reader.occurrences(id);
  std::optional<IndexTraits> earlier;
  for (std::uint32_t id = 0; id < documents; ++id) {
    const std::optional<IndexTraits> traits = reader.traits(id);
    if (traits && earlier) areNearCopies(traits->sketch, earlier->sketch);
    earlier = traits;
  }
  require(!reader.traits(documents) && reader.statedLanguage().size() <= 35);
  reader.find("nothing");
  for (std::uint32_t id = 0; id < documents; ++id) {
    reader.places().places(id);
    for (const NameAtPlace& at : reader.namesOf(id))
      reader.name(at.name);
    reader.titles().words(id);
  }
  for (TermDictionary::Cursor cursor(reader.titles().terms(), 0); cursor.next();) {
    for (const TitleTable::Posting& posting : reader.titles().postings(cursor.entry()))
      require(posting.document < documents);
  }
  for (TermDictionary::Cursor cursor(reader.terms(), 0); cursor.next();)
    require(reader.occurrenceCode(cursor.entry()) <= reader.terms().size());
  NameTable::Cursor name(reader.names());
  name.seek("word");
}

void ask(const TSSearchRef& search, std::string_view query) {
  for (const bool isPlainText : {false, true})
    TSSearchFindDocuments(search, query, {.lastWordIsPrefix = true, .isPlainText = isPlainText}, 5);
  const auto found = TSSearchFindDocuments(search, query, {"en", true}, 5);
  for (const TSSearchHit& hit : found.hits) {
    require(hit.document < TSSearchGetDocumentCount(search));
    TSSearchCopyDocumentURL(search, hit.document);
    TSSearchCopyDocumentProperties(search, hit.document);
    TSSearchFindPlaces(search, found, hit.document, 3);
  }
  for (const TSNamedPlace& named : found.named)
    TSSearchCopyPlace(search, named);
  TSSearchFindNames(search, query, 5);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Data data{std::string(fuzz::view(bytes, size))};
  const TSIndexRef index = TSIndexOpenWithData(data, std::nullopt);
  if (index == nullptr) {
    static const TSSearchRef healthy = smallIndex();
    ask(healthy, fuzz::view(bytes, size));
    return 0;
  }
  TSIndexGetAnalysisProperties(index);
  listDocuments(index);
  readDirectly(*IndexReader::open(data));
  const TSSearchRef search = TSSearchCreateWithIndex(index);
  for (const char* query :
       {"common word3", "\"common word3\" -word4", "comon", "wor", "c1 word", "->> word3 +",
        "\"word2 the common\" \"word2\" -\"common word4\" \"common wo"})
    ask(search, query);
  return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) {
  auto sections = takeApart(fuzz::view(bytes, size), indexContainer);
  if (!sections || seed % 16 == 0) return LLVMFuzzerMutate(bytes, size, maximum);
  std::string& section = (*sections)[seed % sections->size()];
  section = fuzz::mutated(section, section.size() + fuzz::roomToGrow);
  std::string index;
  assembleContainer(indexContainer, *sections, index);
  return fuzz::give(index, bytes, maximum);
}
