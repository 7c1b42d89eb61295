#include "platform/linux/linux_platform.h"

#include <QMessageBox>

namespace tollvane {
namespace {

std::optional<std::filesystem::path> defaultsFile() {
  const auto configuration = XdgLocations::configuration();
  return configuration ? std::optional(*configuration / "Tollvane" / "defaults.json") : std::nullopt;
}

const Alert noStatusBar = {
    .messageText = "This desktop shows no status icons",
    .informativeText =
        "Tollvane is running and keeps its history, but there is no place for its bell. The bell appears as "
        "soon as a panel or an extension of the desktop shows status icons.",
};

}  // namespace

LinuxPlatform::LinuxPlatform(const std::filesystem::path& bundle)
    : appearance_(QDBusConnection::sessionBus()),
      defaults_(files_, defaultsFile()),
      bundle_(bundle),
      windows_(clock_),
      applications_(procFs_, entries_, windows_, &clock_),
      processes_(procFs_),
      statusBar_(bundle / "icons"),
      bar_(QDBusConnection::sessionBus(), statusBar_, queue_),
      launcher_(tokens_),
      busActivation_(QDBusConnection::sessionBus(), launcher_, tokens_),
      activator_({&sway_, &x11_, &busActivation_}),
      workspace_(procFs_, applications_, activator_, launcher_),
      application_(tokens_),
      alerts_([this](QMessageBox& alert) { application_.bringForward(alert); }),
      login_(files_, XdgLocations::configuration(), bundle / "Tollvane"),
      settingsWindows_([this](QWidget& window) { application_.bringForward(window); }) {
  bar_.onNoStatusBar = [this] { alerts_.runModal(noStatusBar, [](std::size_t) {}); };
}

std::string LinuxPlatform::takeToken() {
  std::string fromClick = statusBar_.takeActivationToken();
  std::string fromStart = std::exchange(token_, std::string());
  return fromClick.empty() ? fromStart : fromClick;
}

Platform LinuxPlatform::roles() {
  return {queue_,     clock_, dates_,       defaults_, locations_, files_,  bundle_, children_,        processes_,
          workspace_, bar_,   application_, alerts_,   http_,      safari_, login_,  settingsWindows_, linuxWording};
}

}  // namespace tollvane
