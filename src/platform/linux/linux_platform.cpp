#include "platform/linux/linux_platform.h"

#include <QMessageBox>
#include <utility>

#include "platform/linux/linux_wording.h"

namespace tollvane {
namespace {

std::optional<std::filesystem::path> defaultsFile() {
  const auto configuration = configurationFolder();
  return configuration ? std::optional(*configuration / "Tollvane" / "defaults.json") : std::nullopt;
}

// There is no Safari on Linux, so its extension is not enabled.
class NoSafari : public SafariServices {
 public:
  void dispatchMessage(std::string_view, std::string_view, std::string_view) override {}
  void getState(std::string_view, std::function<void(std::optional<bool>)> completion) override {
    completion(std::nullopt);
  }
  void showPreferences(std::string_view) override {}
};

const Alert noStatusBar = {
    .messageText = "This desktop shows no status icons",
    .informativeText =
        "Tollvane is running and keeps its history, but there is no place for its bell. The bell appears as "
        "soon as a panel or an extension of the desktop shows status icons.",
};

const Alert shellOffer = {
    .messageText = "GNOME shows no status icons",
    .informativeText =
        "Tollvane is running and keeps its history, but there is no place for its bell. Its own extension of GNOME "
        "Shell shows the bell in the top bar, and lets a click bring the right window forward.",
    .buttons = {"Add to GNOME", "Not now"},
};

const Alert shellExtensionAdded = {
    .messageText = "The bell comes with your next login",
    .informativeText = "The extension was added. GNOME Shell loads new extensions when you log in.",
};

const Alert shellExtensionNotAdded = {
    .messageText = "The extension couldn't be added",
    .informativeText = "Its files couldn't be written into your home folder.",
};

}  // namespace

LinuxPlatform::LinuxPlatform(const std::filesystem::path& bundle)
    : appearance_(QDBusConnection::sessionBus()),
      defaults_(files_, defaultsFile()),
      bundle_(bundle),
      windows_(clock_),
      background_(entries_),
      applications_(processes_, entries_, windows_, &background_),
      statusBar_(bundle / "icons"),
      bar_(QDBusConnection::sessionBus(), statusBar_, queue_),
      shellExtension_(QDBusConnection::sessionBus(), files_, bundle / "Extensions/gnome", dataFolder()),
      launcher_(tokens_),
      kwin_(QDBusConnection::sessionBus()),
      gnome_(QDBusConnection::sessionBus()),
      busActivation_(QDBusConnection::sessionBus(), launcher_, tokens_),
      activator_({&sway_, &kwin_, &gnome_, &wayland_, &x11_, &busActivation_}, queue_),
      workspace_(applications_, clock_, activator_, launcher_),
      application_(tokens_),
      alerts_([this](QMessageBox& alert) { application_.bringForward(alert); }),
      http_(bundle / "TollvaneWeb.so"),
      safari_(std::make_unique<NoSafari>()),
      login_(files_, configurationFolder(), bundle / "Tollvane"),
      settingsWindows_([this](QWidget& window) { application_.bringForward(window); }) {
  login_.repair();
  const auto data = dataFolder();
  const auto& folders = entries_.environment().dataFolders;
  if (data) writeLauncherEntry(files_, *data, {folders.begin(), folders.end()}, bundle);
  bar_.onChoice = [this](const std::string& token) { setToken(token); };
  bar_.onNoStatusBar = [this] {
    shellExtension_.find([this] { offerShellExtension(); }, [this] { alerts_.show(noStatusBar, [](std::size_t) {}); });
  };
}

void LinuxPlatform::offerShellExtension() {
  alerts_.show(shellOffer, [this](std::size_t button) {
    if (button != 0) return;
    const bool done = shellExtension_.install();
    alerts_.show(done ? shellExtensionAdded : shellExtensionNotAdded, [](std::size_t) {});
  });
}

std::string LinuxPlatform::takeToken() {
  std::string fromClick = statusBar_.takeActivationToken();
  std::string fromStart = std::exchange(token_, std::string());
  return fromClick.empty() ? fromStart : fromClick;
}

Platform LinuxPlatform::roles() {
  return {
      .mainQueue = queue_,
      .clock = clock_,
      .dates = dates_,
      .defaults = defaults_,
      .locations = locations_,
      .files = files_,
      .bundle = bundle_,
      .children = children_,
      .processes = processes_,
      .workspace = workspace_,
      .statusBar = bar_,
      .application = application_,
      .alerts = alerts_,
      .http = http_,
      .safari = *safari_,
      .login = login_,
      .settingsWindows = settingsWindows_,
      .wording = linuxWording,
  };
}

}  // namespace tollvane
