#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <unistd.h>

namespace quorvex::test {

/// A test's own folder, removed with its contents.
class TemporaryFolder {
 public:
  /// `name`: the last component; any name that the file system allows.
  explicit TemporaryFolder(const std::string& name = "folder") {
    std::string pattern = (std::filesystem::temp_directory_path() / "quorvex-XXXXXX").string();
    _parent = ::mkdtemp(pattern.data());
    _path = _parent / name;
    std::filesystem::create_directory(_path);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_parent, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return _path; }

  /// Writes a file below the folder, creating the folders in between.
  void write(const std::string& subpath, std::string_view contents) const {
    std::filesystem::create_directories((_path / subpath).parent_path());
    std::ofstream(_path / subpath, std::ios::binary) << contents;
  }

 private:
  std::filesystem::path _parent;
  std::filesystem::path _path;
};

}  // namespace quorvex::test
