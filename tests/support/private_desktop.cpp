#include "tests/support/private_desktop.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

// What would let a program find the user's own desktop, or change what it looks like.
constexpr std::string_view foreignVariables[] = {
    "DBUS_",
    "DISPLAY=",
    "GDK_",
    "GTK_",
    "HOME=",
    "LANG",
    "LC_",
    "PIPEWIRE_",
    "PULSE_",
    "QT_QPA_",
    "QT_SCALE",
    "QT_STYLE",
    "SESSION_MANAGER=",
    "WAYLAND_",
    "XAUTHORITY=",
    "XDG_",
};

bool isForeign(const std::string& name) {
  const std::string start = name + '=';
  return std::ranges::any_of(foreignVariables, [&](std::string_view foreign) { return start.starts_with(foreign); });
}

std::filesystem::path makeRoot() {
  std::string name = (std::filesystem::temp_directory_path() / "tollvane-desktop-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
  return name;
}

// A socket's file is there before anybody listens behind it.
bool accepts(const std::filesystem::path& socketFile) {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketFile.string().copy(address.sun_path, sizeof address.sun_path - 1);
  const bool connected = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return connected;
}

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error("the private desktop did not come up: " + what);
}

// Reads the program's lines until it prints this one.
bool prints(Process& program, std::string_view wanted) {
  while (const auto line = program.line(desktopPatience)) {
    if (*line == wanted) return true;
  }
  return false;
}

}  // namespace

PrivateDesktop::PrivateDesktop(Options options) : options_(options), root_(makeRoot()) {
  std::filesystem::create_directory(root_ / "run");
  std::filesystem::permissions(root_ / "run", std::filesystem::perms::owner_all);
  startBus();
  if (options_.screen) {
    startScreen();
    writePanelSettings();
  }
  if (options_.panel) startPanel();
}

PrivateDesktop::~PrivateDesktop() {
  panel_.reset();
  windowManager_.reset();
  server_.reset();
  bus_.reset();
  stopStrays();
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

std::string PrivateDesktop::busAddress() const { return "unix:path=" + (root_ / "run/bus").string(); }

Variables PrivateDesktop::variablesWith(const Variables& extra) const {
  // What is there already stays.
  Variables variables = extra;
  variables.merge(Variables{
      {"HOME", root_.string()},
      {"XDG_RUNTIME_DIR", (root_ / "run").string()},
      {"XDG_CURRENT_DESKTOP", "XFCE"},
      {"DBUS_SESSION_BUS_ADDRESS", busAddress()},
      {"NO_AT_BRIDGE", "1"},
      {"LANG", "C.UTF-8"},
      display_.empty() ? Variables::value_type("QT_QPA_PLATFORM", "offscreen")
                       : Variables::value_type("DISPLAY", display_),
  });
  Variables inherited = ownVariables();
  std::erase_if(inherited, [](const auto& variable) { return isForeign(variable.first); });
  variables.merge(inherited);
  return variables;
}

std::unique_ptr<Process> PrivateDesktop::start(const std::vector<std::string>& command, const Variables& extra) {
  const bool verbose = std::getenv("TOLLVANE_TEST_VERBOSE") != nullptr;
  return std::make_unique<Process>(
      command, Process::Options{.input = Process::Input::written,
                                .output = Process::Output::read,
                                .variables = variablesWith(extra),
                                .errors = verbose ? std::nullopt : std::optional<std::filesystem::path>("/dev/null")});
}

std::optional<std::string> PrivateDesktop::run(const std::vector<std::string>& command) {
  const std::unique_ptr<Process> program = start(command);
  program->closeInput();
  std::string printed = program->rest(desktopPatience);
  if (program->exitCode(desktopPatience) != 0) return std::nullopt;
  return printed;
}

void PrivateDesktop::startBus() {
  bus_ = start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + busAddress()});
  const auto decided = [this] { return accepts(root_ / "run/bus") || !bus_->running(); };
  require(waitUntil(decided, desktopPatience) && bus_->running(), "dbus-daemon");
}

void PrivateDesktop::startScreen() {
  // Without -noreset the server would start over when the first client that only looks around leaves.
  server_ = start({"Xvfb", "-displayfd", "1", "-screen", "0", "800x480x24", "-nolisten", "tcp", "-noreset"});
  const auto number = server_->line(desktopPatience);
  require(number.has_value(), "Xvfb");
  display_ = ":" + *number;
  // It names itself on the root window too early: a window that is mapped while it starts may escape it for ever.
  windowManager_ = start({"openbox", "--sm-disable", "--startup", "echo ready"});
  require(prints(*windowManager_, "ready"), "openbox");
}

void PrivateDesktop::writePanelSettings() {
  std::ostringstream file;
  file << std::ifstream(XFCE4_PANEL_SETTINGS).rdbuf();
  std::string settings = file.str();
  constexpr std::string_view placeholder = "@DARK_MODE@";
  const std::size_t place = settings.find(placeholder);
  require(place != std::string::npos, XFCE4_PANEL_SETTINGS);
  settings.replace(place, placeholder.size(), options_.tone == Tone::dark ? "true" : "false");
  const std::filesystem::path directory = root_ / ".config/xfce4/xfconf/xfce-perchannel-xml";
  std::filesystem::create_directories(directory);
  std::ofstream(directory / "xfce4-panel.xml") << settings;
}

void PrivateDesktop::startPanel() {
  panel_ = start({"xfce4-panel", "--disable-wm-check"});
  const auto hasHost = [this] {
    const auto host =
        run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
             "org.kde.StatusNotifierWatcher", "IsStatusNotifierHostRegistered"});
    return host && host->find("true") != std::string::npos;
  };
  require(waitUntil(hasHost, desktopPatience), "xfce4-panel");
}

std::string PrivateDesktop::registeredItems() {
  const auto items = run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                          "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"});
  return items && items->find('"') != std::string::npos ? *items : std::string();
}

void PrivateDesktop::screenshot(const std::filesystem::path& file) {
  require(run({"scrot", "--overwrite", file.string()}).has_value(), "a screenshot");
}

// What the bus started on demand is nobody's child here. It is known by our runtime directory in its environment.
void PrivateDesktop::stopStrays() {
  const std::string mark = "XDG_RUNTIME_DIR=" + (root_ / "run").string();
  const auto strays = [&] {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      const std::string name = entry.path().filename().string();
      if (name.find_first_not_of("0123456789") != std::string::npos) continue;
      std::ifstream file(entry.path() / "environ", std::ios::binary);
      const std::string environment{std::istreambuf_iterator<char>(file), {}};
      if (('\0' + environment).find('\0' + mark + '\0') != std::string::npos) {
        found.push_back(static_cast<pid_t>(std::stol(name)));
      }
    }
    return found;
  };
  const auto signalAll = [&](int number) {
    for (const pid_t pid : strays()) ::kill(pid, number);
  };
  signalAll(SIGTERM);
  if (!waitUntil([&] { return strays().empty(); }, 2s)) signalAll(SIGKILL);
}

}  // namespace tollvane::test
