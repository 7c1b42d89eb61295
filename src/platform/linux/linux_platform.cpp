#include "platform/linux/linux_platform.h"

namespace tollvane {
namespace {

std::optional<std::filesystem::path> defaultsFile() {
  const auto configuration = XdgLocations::configuration();
  return configuration ? std::optional(*configuration / "Tollvane" / "defaults.json") : std::nullopt;
}

}  // namespace

LinuxPlatform::LinuxPlatform(const std::filesystem::path& bundle)
    : defaults_(files_, defaultsFile()),
      bundle_(bundle),
      windows_(clock_),
      applications_(procFs_, entries_, windows_),
      processes_(procFs_),
      workspace_(procFs_, applications_),
      statusBar_(bundle / "icons") {}

Platform LinuxPlatform::roles() {
  return {queue_,  clock_,    dates_,     defaults_,  locations_, files_,
          bundle_, children_, processes_, workspace_, statusBar_};
}

}  // namespace tollvane
