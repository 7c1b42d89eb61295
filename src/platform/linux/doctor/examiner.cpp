#include "platform/linux/doctor/examiner.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QVariant>
#include <algorithm>
#include <cstdlib>

#include "catalogue/browsers.h"
#include "platform/linux/apps/applications.h"
#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/kernel/folders.h"
#include "platform/linux/kernel/proc_fs.h"
#include "platform/linux/session/autostart_login.h"
#include "platform/linux/session/single_instance.h"
#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/workspace/browser_programs.h"
#include "platform/linux/x11/x11_desktop.h"
#include "platform/linux/x11/x11_windows.h"
#include "platform/locations.h"
#include "platform/posix/local_socket.h"
#include "platform/posix/posix_files.h"
#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largestExamined = 1 << 20;
constexpr int busPatience = 1000;  // milliseconds

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

// --- sound -----------------------------------------------------------------------------------------------------------

std::vector<std::string> soundServers() {
  std::string folder = variable("PIPEWIRE_RUNTIME_DIR");
  if (folder.empty()) folder = variable("XDG_RUNTIME_DIR");
  std::string remote = variable("PIPEWIRE_REMOTE");
  if (remote.empty()) remote = "pipewire-0";
  std::vector<std::string> servers;
  if (isAnswered(remote.front() == '/' ? remote : folder + "/" + remote)) servers.emplace_back("PipeWire");
  const std::string pulse = variable("PULSE_SERVER");
  const std::string path = pulse.starts_with("unix:") ? pulse.substr(5) : variable("XDG_RUNTIME_DIR") + "/pulse/native";
  if (isAnswered(path)) servers.emplace_back("PulseAudio's protocol");
  return servers;
}

// --- the bus ---------------------------------------------------------------------------------------------------------

bool isOnBus(const QDBusConnection& bus, QLatin1String name) {
  return bus.isConnected() && bus.interface()->isServiceRegistered(name).value();
}

std::optional<std::string> notificationService(const QDBusConnection& bus) {
  constexpr QLatin1String service("org.freedesktop.Notifications");
  if (!bus.isConnected()) return std::nullopt;
  if (!isOnBus(bus, service)) {
    const QDBusReply<QStringList> activatable = bus.interface()->call(QStringLiteral("ListActivatableNames"));
    if (!activatable.isValid() || !activatable.value().contains(service)) return std::nullopt;
    return "a service that starts when it is needed";
  }
  QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"), service,
                                                     QStringLiteral("GetServerInformation"));
  call.setAutoStartService(false);
  const QDBusMessage answer = bus.call(call, QDBus::Block, busPatience);
  const QString name = answer.arguments().value(0).toString();
  return name.isEmpty() ? "a service without a name" : name.toStdString();
}

// The name of the panel. Xfce's panel runs the part with the status icons in a process of its own, "wrapper-2.0".
std::string barName(Pid pid) {
  const ProcFs processes;
  const std::string name = processes.programName(pid);
  const auto parent = processes.parentPid(pid);
  return name.starts_with("wrapper-") && parent ? processes.programName(*parent) : name;
}

// Whether GNOME Shell has Tollvane's extension, and it is turned on.
bool hasShellExtension(const QDBusConnection& bus) {
  if (!isOnBus(bus, QLatin1String("org.gnome.Shell"))) return false;
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/quarnel/tollvane/shell"),
      QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
  call.setAutoStartService(false);
  const QDBusReply<QString> answer = bus.call(call, QDBus::Block, busPatience);
  return answer.isValid() && answer.value().contains(QLatin1String("com.quarnel.tollvane.Shell"));
}

// Sets the place for the bell, and the program that shows it.
void findBellPlace(const QDBusConnection& bus, const X11Desktop& x11, bool hasExtension, Examination& found) {
  constexpr QLatin1String watcher("org.kde.StatusNotifierWatcher");
  if (isOnBus(bus, watcher)) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"),
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << watcher << QStringLiteral("IsStatusNotifierHostRegistered");
    call.setAutoStartService(false);
    const QDBusReply<QDBusVariant> hasHost = bus.call(call, QDBus::Block, busPatience);
    if (hasHost.isValid() && hasHost.value().variant().toBool()) {
      found.bellPlace = BellPlace::statusBar;
      const auto pid = bus.interface()->servicePid(watcher);
      if (pid.isValid()) found.bar = barName(static_cast<Pid>(pid.value()));
      return;
    }
  }
  if (x11.hasTray) found.bellPlace = BellPlace::oldTray;
  if (hasExtension) found.bellPlace = BellPlace::shell;
}

std::optional<RunningTollvane> running(const QDBusConnection& bus) {
  const auto first = FirstInstance::find(bus);
  if (!first) return std::nullopt;
  RunningTollvane tollvane = runningTollvane(FirstInstance::state(bus));
  std::error_code error;
  const std::string program = fs::read_symlink("/proc/" + std::to_string(first->pid) + "/exe", error);
  tollvane.isOutdated = program.ends_with(" (deleted)");
  return tollvane;
}

WindowWay windowWay(const QDBusConnection& bus, const X11Desktop& x11, bool hasExtension) {
  if (!variable("SWAYSOCK").empty()) return WindowWay::sway;
  if (isOnBus(bus, QLatin1String("org.kde.KWin"))) return WindowWay::kwin;
  if (hasExtension) return WindowWay::shell;
  if (variable("WAYLAND_DISPLAY").empty()) return x11.hasWindowManager ? WindowWay::x11 : WindowWay::none;
  return WindowWay::others;
}

// --- browsers --------------------------------------------------------------------------------------------------------

std::vector<ExaminedBrowser> browsers(const Locations& locations, const WantedManifests& wanted) {
  const ProcFs processes;
  const SystemClock clock;
  DesktopEntries entries;
  NoX11Windows windows;
  const Applications applications(processes, entries, windows);
  const BrowserPrograms programs(applications, clock);
  entries.refresh();
  std::vector<ExaminedBrowser> found;
  for (const BrowserEdition& edition : browserEditions()) {
    if (edition.manifests.empty()) continue;
    ExaminedBrowser browser;
    browser.bundleID = edition.bundleID;
    for (const std::string_view id : desktopIdsOfBundle(edition.bundleID)) {
      const auto entry = entries.withId(id);
      if (entry == nullptr) continue;
      if (browser.name.empty()) browser.name = entry->name;
      browser.packagings.push_back(packagingOf(entry->path));
    }
    browser.isRunning = !programs.running(edition).empty();
    if (browser.packagings.empty() && !browser.isRunning) continue;
    if (browser.name.empty()) browser.name = mainRelease(edition.family)->name;
    const auto& admitted = edition.family == "firefox" ? wanted.addOns : wanted.origins;
    for (const auto& folder : locations.nativeHostDirectories(edition.bundleID))
      browser.ownManifest = manifestState(folder / wanted.file, admitted);
    if (!edition.systemManifests.empty())
      browser.systemManifest = manifestState(fs::path(edition.systemManifests) / wanted.file, admitted);
    found.push_back(std::move(browser));
  }
  return found;
}

// The nearest folder that exists, because the others would be made there.
bool isWritable(fs::path folder) {
  std::error_code error;
  while (!fs::exists(folder, error) && folder.has_relative_path()) folder = folder.parent_path();
  return ::access(folder.c_str(), W_OK) == 0;
}

}  // namespace

ManifestState manifestState(const fs::path& manifest, const std::vector<std::string>& admitted) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(manifest, error))) return ManifestState::none;
  const auto text = readPlainFile(manifest, largestExamined);
  const auto object = text ? json::object(*text) : std::nullopt;
  if (!object) return ManifestState::unreadable;
  const auto admits = [&](const char* key) {
    const auto list = object->find(key);
    if (list == object->end() || !list->is_array()) return false;
    return std::ranges::all_of(
        admitted, [&](const std::string& each) { return std::find(list->begin(), list->end(), each) != list->end(); });
  };
  if (!admits("allowed_origins") && !admits("allowed_extensions")) return ManifestState::unreadable;
  const auto bridge = json::text(*object, "path");
  return bridge && ::access(bridge->c_str(), X_OK) == 0 ? ManifestState::right : ManifestState::noBridge;
}

BrowserPackaging packagingOf(std::string_view desktopEntry) {
  if (desktopEntry.find("/flatpak/") != desktopEntry.npos) return BrowserPackaging::flatpak;
  if (desktopEntry.find("/snapd/") != desktopEntry.npos) return BrowserPackaging::snap;
  return BrowserPackaging::ordinary;
}

std::string lastTimeIn(const fs::path& history) {
  constexpr std::size_t longestLine = 64 << 10;
  constexpr std::size_t timeLength = std::string_view("2026-01-01 00:00:00").size();
  const UniqueFd file = openPlainFile(history);
  if (!file) return "";
  const off_t size = ::lseek(file.get(), 0, SEEK_END);
  const off_t start = std::max<off_t>(0, size - static_cast<off_t>(longestLine));
  if (size <= 0 || ::lseek(file.get(), start, SEEK_SET) < 0) return "";
  std::string text(static_cast<std::size_t>(size - start), '\0');
  const auto length = readFully(file.get(), text.data(), text.size());
  text.resize(length.value_or(0));
  while (text.ends_with('\n')) text.pop_back();
  const auto lineFeed = text.rfind('\n');
  if (lineFeed == text.npos && start > 0) return "";
  const std::string time = text.substr(lineFeed == text.npos ? 0 : lineFeed + 1).substr(0, timeLength);
  const bool isTime = time.size() == timeLength && time.find_first_not_of("0123456789-: ") == time.npos;
  return isTime ? time : "";
}

RunningTollvane runningTollvane(const std::string& state) {
  RunningTollvane tollvane;
  const auto object = json::object(state);
  if (!object) return tollvane;
  tollvane.version = json::text(*object, "version").value_or("");
  tollvane.hearsLogTool = json::isTrue(*object, "logTool");
  tollvane.hearsSoundServer = json::isTrue(*object, "soundServer");
  const auto extensions = object->find("extensions");
  if (extensions == object->end() || !extensions->is_array()) return tollvane;
  for (const auto& extension : *extensions) {
    if (!extension.is_object()) continue;
    tollvane.extensions.push_back({json::text(extension, "browser").value_or(""),
                                   json::text(extension, "version").value_or("?"),
                                   json::text(extension, "lastReport").value_or("")});
  }
  return tollvane;
}

Examination examine(const fs::path& bundle, const WantedManifests& wanted, const QDBusConnection& bus) {
  const XdgLocations locations;
  PosixFiles files;
  const auto configuration = configurationFolder();
  const X11Desktop x11 = variable("DISPLAY").empty() ? X11Desktop() : X11Desktop::find();
  const bool hasExtension = hasShellExtension(bus);
  Examination found;
  found.home = homeFolder();
  found.bundle = bundle;
  for (const char* part :
       {"TollvaneLog", "TollvaneLogPulse.so", "TollvaneBridge", "TollvaneWeb.so", "Info.json", "Extensions", "icons"})
    if (!files.exists(bundle / part)) found.missingParts.emplace_back(part);
  found.hasSessionBus = bus.isConnected();
  found.running = running(bus);
  found.soundServers = soundServers();
  found.notificationService = notificationService(bus);
  findBellPlace(bus, x11, hasExtension, found);
  found.desktop = variable("XDG_CURRENT_DESKTOP");
  found.windowWay = windowWay(bus, x11, hasExtension);
  found.browsers = browsers(locations, wanted);
  found.login = AutostartLogin(files, configuration, bundle / "Tollvane").status();
  found.supportFolder = dataFolder().value_or("") / supportDirectoryName;
  found.lastSound = lastTimeIn(found.supportFolder / "history.txt");
  found.supportFolderIsWritable = isWritable(found.supportFolder);
  found.settingsFile = configuration.value_or("") / "Tollvane" / "defaults.json";
  const auto settings = files.exists(found.settingsFile) ? files.read(found.settingsFile, largestExamined) : "{}";
  found.settingsAreReadable = settings && json::object(*settings);
  return found;
}

}  // namespace tollvane
