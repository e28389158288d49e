#include "platform/user_defaults.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "common/descriptor.h"
#include "common/files.h"
#include "common/keyed_document.h"
#include "common/system_error.h"
#include "platform/file_removal.h"

namespace quorvex {
namespace {

class FileUserDefaults final : public UserDefaults {
 public:
  explicit FileUserDefaults(std::string folder) : _folder(std::move(folder)) {}

  Status removePersistentDomain(const std::string& name) override {
    const std::string path = pathOf(name);
    if (!path.starts_with('/')) return Error{"The home folder is unknown"};
    // Not recursive: a folder of that name is not one of our domains.
    if (::unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return okStatus();
    return systemError(errno);
  }

  Status synchronize() override {
    const Descriptor folder(::open(_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
      if (errno == ENOENT || errno == ENOTDIR) return okStatus();
      return systemError(errno);
    }
    if (::fsync(folder.get()) != 0) return systemError(errno);
    return okStatus();
  }

  std::optional<Dictionary> persistentDomain(const std::string& name) override {
    const std::string path = pathOf(name);
    if (!itemExists(path)) return std::nullopt;
    const auto document = readKeyedDocument(path);
    if (!document || document->dictionary() == nullptr) return Dictionary();
    return *document->dictionary();
  }

 private:
  std::string pathOf(const std::string& domain) const {
    return appendPathComponent(_folder, domain + ".kvdoc");
  }

  std::string _folder;
};

}  // namespace

std::shared_ptr<UserDefaults> standardUserDefaults() {
  return std::make_shared<FileUserDefaults>(expandTilde("~/Library/Preferences"));
}

}  // namespace quorvex
