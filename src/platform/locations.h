// Where the user's files are. Callable from any thread; answers do not change while the process runs.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

namespace tollvane {

class Locations {
 public:
  virtual ~Locations() = default;

  // The directory in which applications keep their data for this user. It need not exist.
  // Absent when the system names none (a user without a home).
  virtual std::optional<std::filesystem::path> applicationSupport() const = 0;

  // The folders in which applications stand as bundles named after themselves ("Mail.app"), in the order in which
  // to look. Empty on a system that has no such folders.
  virtual std::vector<std::filesystem::path> applicationFolders() const = 0;
};

}  // namespace tollvane
