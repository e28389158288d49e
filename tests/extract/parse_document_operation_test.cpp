#include "extract/parse_document_operation.h"

#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

using test::printed;

struct CountingManager : QXParseDocumentManager {
  void completed(QXParseDocumentOperation& /*operation*/) override { ++calls; }
  int calls = 0;
};

/// The record as "title|summary|keywords|content|anchors|links|identifier|flags", "none" when the
/// page is not passed on.
std::string record(const std::string& html, std::uint64_t format = 2) {
  const auto manager = std::make_shared<CountingManager>();
  const IndexSettings settings;
  QXParseDocumentOperation operation(Data(html), "p.html", format, settings);
  operation.manager = manager;
  operation.main();
  EXPECT_EQ(manager->calls, 1);
  EXPECT_TRUE(operation.data().empty());
  if (operation.documents().empty()) return "none";
  const QXParsedDocument& document = *operation.documents().front();
  std::string text = document.title() + '|' + document.summary() + '|' + document.keywords() + '|' +
                     document.content() + '|';
  for (const std::string& anchor : document.anchors())
    text += anchor + ' ';
  text += '|';
  for (const ScriptLink& link : document.xScriptLinks()) {
    text += link.at("Name") + '>' + link.at("Link") + ' ';
  }
  text += '|' + document.identifier().value_or("-") + '|';
  text += document.anchorsOnly() ? "a" : "";
  text += document.dontIndex() ? "d" : "";
  text += document.keywordsOnly() ? "k" : "";
  return text;
}

TEST(ParseDocumentOperation, MakesRecords) {
  const std::string robots = "<meta name=RoBoTs content=";
  for (const auto& [html, expected] : std::vector<std::pair<std::string, std::string>>{
           {"<title>Hello\n    World </title><body>Some <b>bold</b>  text",
            "Hello\n World|||Some bold text|||-|"},
           {"<title>A</title><title>B</title>", "A B||||||-|"},
           {"<meta name=Keywords content=a,b><meta name=keywords content=c>", "||a,b c||||-|"},
           {"<meta name=DESCRIPTION content=' D '>", "|D|||||-|"},
           {"<body id=MiXed><a name=One>", "||||One ||mixed|"},
           {"<a name=One id=two><a name=One>", "||||One two ||One|"},
           {robots + "NoIndex>x", "none"},
           {robots + "'noindex, anchors'><body>x", "||||||-|"},
           {robots + "noindex>" + robots + "anchors><body><a name=a>x", "||||a ||a|ad"},
           {robots + "anchors><body>x<a name=a><a name=b>", "||||a b ||a|a"},
           {robots + "keywords><body>x<a name=a>", "||||||-|k"},
           {robots + "><body>x", "||||||-|"},
           {"<body>x<a href=help:t>in<i>deep</i></a>y", "|||x deep y||in>help:t |-|"},
           {"<body><a class=c href='x-help-action:z'>w</a>", "|||||w>c |-|"},
           {"<body><a href=help:t><i>deep</i></a>", "|||deep|||-|"},
           {"<body><a data-x href=help:t>w</a>", "none"},
           {"", "||||||-|"},
       }) {
    EXPECT_EQ(record(html), expected) << html;
  }
  EXPECT_EQ(record(robots + "keywords><body>x<a name=a>", 4), "|||x|a ||a|k");
}

TEST(ParseDocumentOperation, CompressesOnlySpaces) {
  EXPECT_EQ(compressString("\xE2\x80\xA8 a  b\t\t c \n  d\xC2\xA0"), "a b\t\t c \n d");
  EXPECT_EQ(compressString(" \n\t "), "");
}

TEST(ParseDocumentOperation, BlocksEndTheSentencesOfASummary) {
  const std::string prose = "The pump moves water uphill.";
  IndexSettings settings;
  settings.generateSummaries = true;
  const std::string joined = "Pumps The pump moves water uphill.";
  for (const auto& [html, summary] : std::vector<std::pair<std::string, std::string>>{
           {"<h1> Pumps</h1>  The <b>pump</b>\n \n moves  water<i> </i>uphill.<p>Next", prose},
           {"<a>Pumps</a>\n\n<!-- -->The pump moves water uphill.", joined},
           {"Pumps<br>The pump moves water uphill.", joined},
           {"Pumps<br> <br>The pump moves water uphill.<br><br>Next", prose},
           {"<table><tr><td>Pumps<td>The pump moves water uphill.</table>Next", prose},
           {"Pumps\n\nThe pump moves water uphill.", joined},
           {"<pre><i>Pumps\n \n\nThe pump\nmoves water uphill.</i>\n\nNext", prose}}) {
    QXParseDocumentOperation operation(Data("<body>" + html), "p.html", 2, settings);
    operation.main();
    EXPECT_EQ(operation.primaryDocument()->summaryGeneratedIfNecessary(), summary) << html;
  }
}

TEST(ParseDocumentOperation, Reports) {
  const auto messages = [](const char* html, int verbosity) {
    return printed(verbosity, [&] { record(html); });
  };
  EXPECT_EQ(messages("<body><a data-x href=help:t>w</a>", 0),
            "Exception caught in QXParseDocumentOperation: "
            "The first attribute of a help link has no value\n");
  EXPECT_EQ(messages("<meta name=robots content=anchors>", 1),
            "p.html -- <TITLE> tag missing\n"
            "p.html -- ROBOTS meta tag says we should only index anchors, but no anchors were "
            "found\n");
  EXPECT_EQ(messages("<title>x</title><meta name=robots content=keywords>", 2),
            "p.html -- Unable to set document identifier because document has no id or anchors\n"
            "p.html -- ROBOTS meta tag says we should only index keywords, but no keywords were "
            "found\n"
            "p.html -- Finished parsing html\n");
  EXPECT_NE(messages("<body><a name=x>", 3).find("//a/@id | //a/@name returns: x\n"),
            std::string::npos);
  std::string unparsable;
  for (int i = 0; i < 8; ++i)
    unparsable += "p.html -- Unable to parse HTML into document\n";
  EXPECT_EQ(messages("", 1), unparsable + "p.html -- <TITLE> tag missing\n");
}

}  // namespace
}  // namespace quorvex
