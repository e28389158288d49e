#include <cerrno>
#include <cstdlib>
#include <memory>

#include <elf.h>
#include <gelf.h>
#include <libelf.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/files.h"
#include "common/keyed_document.h"
#include "platform/bundle.h"

namespace quorvex {

namespace {

constexpr std::string_view sectionName = ".quorvex_info";
/// A record has a handful of short entries; a larger section is not one.
constexpr std::size_t largestRecord = std::size_t{64} * 1024;

using ElfHandle = std::unique_ptr<Elf, int (*)(Elf*)>;

std::optional<std::string> recordBytes(Elf* elf) {
  std::size_t names = 0;
  if (::elf_getshdrstrndx(elf, &names) != 0) return std::nullopt;
  for (Elf_Scn* section = nullptr; (section = ::elf_nextscn(elf, section)) != nullptr;) {
    GElf_Shdr header{};
    if (::gelf_getshdr(section, &header) == nullptr) continue;
    const char* name = ::elf_strptr(elf, names, header.sh_name);
    if (name == nullptr || name != sectionName) continue;
    if (header.sh_type == SHT_NOBITS || header.sh_size > largestRecord) continue;
    const Elf_Data* data = ::elf_rawdata(section, nullptr);
    if (data == nullptr || data->d_buf == nullptr) continue;
    return std::string(static_cast<const char*>(data->d_buf), data->d_size);
  }
  return std::nullopt;
}

bool isExecutableFile(const std::string& path) {
  struct stat information = {};
  return ::stat(path.c_str(), &information) == 0 && S_ISREG(information.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<std::string> programPath(std::string_view firstArgument) {
  if (firstArgument.empty()) return std::nullopt;
  if (firstArgument.find('/') != std::string_view::npos) {
    std::string path(firstArgument);
    if (!isExecutableFile(path)) return std::nullopt;
    return path;
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* variable = std::getenv("PATH");
  std::string_view folders = variable != nullptr ? variable : "";
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
    // An empty entry means the current folder.
    std::string path = appendPathComponent(folder.empty() ? "." : folder, firstArgument);
    if (isExecutableFile(path)) return path;
  }
  return std::nullopt;
}

std::optional<Dictionary> informationRecord(const std::string& path) {
  const Result<RegularFile> file = openRegularFile(path);
  if (!file) return std::nullopt;
  if (::elf_version(EV_CURRENT) == EV_NONE) return std::nullopt;
  // Reads only headers and requested sections, not the whole file.
  const ElfHandle elf(::elf_begin(file->descriptor.get(), ELF_C_READ, nullptr), ::elf_end);
  if (elf == nullptr || ::elf_kind(elf.get()) != ELF_K_ELF) return std::nullopt;
  const std::optional<std::string> bytes = recordBytes(elf.get());
  if (!bytes) return std::nullopt;
  Result<Value> record = parseKeyedDocument(*bytes);
  if (!record || record->dictionary() == nullptr) return std::nullopt;
  return std::move(*record->dictionary());
}

std::optional<Dictionary> programInformation(std::string_view firstArgument) {
  if (const std::optional<std::string> path = programPath(firstArgument)) {
    // The caller chooses the first argument, so it may name another program.
    if (std::optional<Dictionary> record = informationRecord(*path)) return record;
  }
  return informationRecord("/proc/self/exe");
}

std::optional<Dictionary> programInformation() {
  return programInformation(program_invocation_name);
}

}  // namespace quorvex
