#include "bridge/application_sockets.h"

#include <algorithm>

#include "platform/locations.h"

namespace tollvane::bridge {

std::vector<std::string> applicationSockets(const std::filesystem::path& program,
                                            const std::optional<std::filesystem::path>& dataFolder,
                                            const std::optional<std::filesystem::path>& socketFolder) {
  std::vector<std::string> sockets;
  const auto folder = program.parent_path();
  const auto support = folder.parent_path();
  if (folder.filename() == programFolderName && support.filename() == supportDirectoryName)
    sockets.push_back(support / bridgeSocketName);
  for (const auto& place : {dataFolder, socketFolder}) {
    if (!place) continue;
    const std::string socket = *place / supportDirectoryName / bridgeSocketName;
    if (std::find(sockets.begin(), sockets.end(), socket) == sockets.end()) sockets.push_back(socket);
  }
  return sockets;
}

}  // namespace tollvane::bridge
