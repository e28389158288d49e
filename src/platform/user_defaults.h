#pragma once

#include <memory>
#include <optional>
#include <string>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// The user's settings, one dictionary for each domain. Changes are on disk after synchronize().
class UserDefaults {
 public:
  UserDefaults() = default;
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;
  virtual ~UserDefaults() = default;

  /// Also succeeds if there is no such domain.
  virtual Status removePersistentDomain(const std::string& name) = 0;
  virtual Status synchronize() = 0;

  /// Returns nothing if there is no such domain. One that is unreadable or not a dictionary reads
  /// as empty.
  virtual std::optional<Dictionary> persistentDomain(const std::string& name) = 0;
};

/// The keyed documents "<domain>.kvdoc" in ~/Library/Preferences.
std::shared_ptr<UserDefaults> standardUserDefaults();

}  // namespace quorvex
