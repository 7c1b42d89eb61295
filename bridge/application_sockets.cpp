#include "bridge/application_sockets.h"

#include "platform/locations.h"

namespace tollvane::bridge {

std::vector<std::string> applicationSockets(const std::filesystem::path& program,
                                            const std::optional<std::filesystem::path>& dataFolder) {
  std::vector<std::string> sockets;
  const auto folder = program.parent_path();
  const auto support = folder.parent_path();
  if (folder.filename() == programFolderName && support.filename() == supportDirectoryName)
    sockets.push_back(support / bridgeSocketName);
  if (dataFolder) {
    const std::string usual = *dataFolder / supportDirectoryName / bridgeSocketName;
    if (sockets.empty() || sockets.front() != usual) sockets.push_back(usual);
  }
  return sockets;
}

}  // namespace tollvane::bridge
