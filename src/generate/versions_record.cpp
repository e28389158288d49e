#include "generate/versions_record.h"

#include <algorithm>
#include <limits>

#include "platform/bundle.h"

namespace quorvex {

namespace {

std::optional<std::string> versionOf(const std::optional<Bundle>& bundle) {
  if (!bundle) return std::nullopt;
  return bundle->version;
}

std::optional<std::string> programVersion() {
  const std::optional<Dictionary> record = programInformation();
  const Value* version = record ? find(*record, informationVersionKey) : nullptr;
  if (version == nullptr || version->string() == nullptr) return std::nullopt;
  return *version->string();
}

std::optional<Value> sourceVersion(const Bundle& bundle) {
  const std::optional<Value> resource = bundleResource(bundle, "version", "kvdoc");
  if (!resource || resource->dictionary() == nullptr) return std::nullopt;
  const Value* version = find(*resource->dictionary(), "SourceVersion");
  if (version == nullptr) return std::nullopt;
  return *version;
}

/// Converts a source version, which counts in ten-thousandths, to the integer version.
std::int64_t fromSourceVersion(const Value& source) {
  constexpr std::int64_t sourceUnits = 10'000;
  constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
  std::int64_t number = 0;
  if (const std::string* text = source.string()) {
    number = integerValue(*text);
  } else if (const std::int64_t* integer = source.integer()) {
    number = std::clamp(*integer, lowest, highest);
  } else if (const double* real = source.real(); real != nullptr && *real == *real) {
    number = static_cast<std::int64_t>(
        std::clamp(*real, static_cast<double>(lowest), static_cast<double>(highest)));
  } else if (const bool* flag = source.boolean()) {
    number = *flag ? 1 : 0;
  }
  return number / sourceUnits;
}

std::int64_t integerOf(const std::optional<std::string>& version) {
  return version ? integerValue(*version) : 0;
}

}  // namespace

SoftwareVersions currentSoftwareVersions() {
  SoftwareVersions versions;
  versions.program = programVersion();
  versions.systemBuild = systemBuildVersion();
  versions.substrate = versionOf(bundleWithIdentifier(substrateIdentifier));
  versions.bedrock = versionOf(bundleWithIdentifier(bedrockIdentifier));
  const std::optional<Bundle> textSift = bundleWithIdentifier(textSiftIdentifier);
  versions.textSift = versionOf(textSift);
  if (textSift) versions.textSiftSource = sourceVersion(*textSift);
  return versions;
}

Dictionary versionsDictionary(const SoftwareVersions& versions) {
  Dictionary record;
  record.emplace("TSI_QUORVEX", versions.program.value_or("0"));
  if (!versions.systemBuild) return record;
  record.emplace("TSI_SYSTEM_BUILD", *versions.systemBuild);
  record.emplace("TSI_SUBSTRATE", integerOf(versions.substrate));
  record.emplace("TSI_BEDROCK", integerOf(versions.bedrock));
  if (versions.textSiftSource) {
    record.emplace("TSI_TEXT_SIFT", fromSourceVersion(*versions.textSiftSource));
  } else if (versions.textSift) {
    record.emplace("TSI_TEXT_SIFT", *versions.textSift);
  }
  return record;
}

}  // namespace quorvex
