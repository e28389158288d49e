#include "cli/program_version.h"

#include "common/format.h"
#include "platform/bundle.h"

namespace quorvex {

namespace {

constexpr std::string_view usageFormat =
    "Usage: %s -I [lsm|beacon] -C -[agv] [-m num] [-s [lang|path]] [-r url] [-l locale] [-x path] "
    "-f output.bchelpindex directory\n"
    "\t-a\tIndex anchors (default is not to)\n"
    "\t-g\tGenerate page summaries if they aren't provided (slow)\n"
    "\t-s\tTo use a built-in stopwords list, pass the two-character\n"
    "\t\t\t\t\t\t\tlang code: en, es, de, fr, sv, hu or it\n"
    "\t\tTo use your own kvdoc of stopwords, pass in a path\n"
    "\t-m\tMinimum term length. Can be 1, 2 or 3\n"
    "\t-x path\tExternal kvdoc file containing the html page data\n"
    "\t-r\tThe index's remote URL. Only necessary for indices deployed in Type 1 & 2 help books.\n"
    "\t-l\tThe locale to use for the index. Should be a locale identifier recognized by Localis.\n"
    "\t-v\tVerbose logging of warnings. Once for warnings, twice for warnings and notes.\n"
    "\t-h\tPrint this message and quit\n";

std::string_view entry(const std::optional<Dictionary>& record, std::string_view key) {
  const Value* value = record ? find(*record, key) : nullptr;
  return value != nullptr && value->string() != nullptr ? std::string_view(*value->string())
                                                        : "err";
}

}  // namespace

std::string versionLine(std::string_view programName) {
  const std::optional<Dictionary> record = programInformation(programName);
  return formatText("quorvex version %s (%s)\n", {entry(record, informationShortVersionKey),
                                                  entry(record, informationVersionKey)});
}

std::string usage(std::string_view programName) {
  return versionLine(programName) + formatText(usageFormat, {programName});
}

}  // namespace quorvex
