// Where the user's files are. Callable from any thread; answers do not change while the process runs.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace tollvane {

// Tollvane's own directory below applicationSupport(), and in it: the directory that holds the copy of the bridge, the
// socket at which the bridges find Tollvane, and what the doctor has last written for the text editor.
inline constexpr std::string_view supportDirectoryName = "Tollvane";
inline constexpr std::string_view programFolderName = "bin";
inline constexpr std::string_view bridgeSocketName = "bridge.sock";
inline constexpr std::string_view doctorFileName = "doctor.txt";

class Locations {
 public:
  virtual ~Locations() = default;

  // The user's home directory; absent if the user has none.
  virtual std::optional<std::filesystem::path> home() const = 0;

  // The directory in which applications keep their data for this user. It need not exist. Absent if the system names
  // none (a user without a home directory).
  virtual std::optional<std::filesystem::path> applicationSupport() const = 0;

  // The directory for this user's sockets on this computer, which no other computer shares. Absent if the system gives
  // the user no such directory.
  virtual std::optional<std::filesystem::path> runtimeFolder() const = 0;

  // The directories in which the browser with this bundle identifier looks for the manifests of native programs that it
  // may start; empty if the browser is unknown or starts no such programs.
  virtual std::vector<std::filesystem::path> nativeHostDirectories(std::string_view bundleID) const = 0;

  // The folders that contain applications as bundles named after themselves ("Mail.app"), in the order in which to
  // search them. Empty on a system that has no such folders.
  virtual std::vector<std::filesystem::path> applicationFolders() const = 0;
};

}  // namespace tollvane
