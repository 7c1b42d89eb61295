#include "tests/support/private_wayland.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace tollvane::test {
namespace {

constexpr std::chrono::milliseconds patienceHere{20000};
constexpr uid_t nobody = 65534;

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error("the private Wayland desktop did not come up: " + what);
}

void write(const std::filesystem::path& file, const std::string& text) { std::ofstream(file) << text; }

void giveAway(const std::filesystem::path& path) {
  if (geteuid() == 0) require(::chown(path.c_str(), nobody, nobody) == 0, path);
}

}  // namespace

PrivateWayland::PrivateWayland(const std::string& pointer) {
  std::string name = (std::filesystem::temp_directory_path() / "tollvane-wayland-XXXXXX").string();
  require(mkdtemp(name.data()) != nullptr, name);
  root_ = name;
  std::filesystem::create_directories(root_ / "waybar");
  std::filesystem::create_directory(root_ / "run");
  std::filesystem::permissions(root_ / "run", std::filesystem::perms::owner_all);
  write(root_ / "waybar/config",
        R"({"layer": "top", "position": "top", "height": 26, "modules-right": ["tray"], "tray": {"spacing": 8}})");
  write(root_ / "waybar/style.css", "window#waybar { background: #2b2b2b; } #tray { padding: 0 8px; }");
  write(root_ / "sway", "output HEADLESS-1 resolution " + std::to_string(width) + "x" + std::to_string(height) +
                            " background #4f6272 solid_color\nxwayland disable\n");
  for (const auto& each : {root_, root_ / "run"}) giveAway(each);
  bus_ = start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=unix:path=" + name + "/run/bus"});
  require(waitUntil([&] { return run({"busctl", "--user", "list"}).has_value(); }, patienceHere), "dbus-daemon");
  startSway();
  pointer_ = start({pointer, std::to_string(width), std::to_string(height)});
  require(pointer_->line(patienceHere) == "ready", "the pointer");
  // Without it the seat would lose its only keyboard with each key's end, and windows the focus.
  keyboard_ = start({"wtype", "-k", "Shift_L", "-s", "3600000"});
  startBar();
}

PrivateWayland::~PrivateWayland() {
  bar_.reset();
  keyboard_.reset();
  pointer_.reset();
  sway_.reset();
  bus_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

void PrivateWayland::startSway() {
  sway_ = start({"sway", "-c", (root_ / "sway").string()});
  require(waitUntil(
              [this] {
                for (const auto& file : std::filesystem::directory_iterator(root_ / "run")) {
                  const std::string name = file.path().filename().string();
                  if (name.starts_with("wayland-") && !name.ends_with(".lock")) display_ = name;
                  if (name.starts_with("sway-ipc.")) socket_ = file.path().string();
                }
                return (!display_.empty() && !socket_.empty()) || !sway_->running();
              },
              patienceHere) &&
              sway_->running(),
          "sway");
}

std::unique_ptr<Process> PrivateWayland::start(const std::vector<std::string>& command) {
  std::vector<std::string> words;
  if (geteuid() == 0)
    words = {"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--pdeathsig", "KILL"};
  words.insert(words.end(), command.begin(), command.end());
  const std::string root = root_.string();
  Variables variables{
      {"PATH", ownVariables()["PATH"]},
      {"HOME", root},
      {"XDG_RUNTIME_DIR", root + "/run"},
      {"XDG_CONFIG_HOME", root},
      {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + root + "/run/bus"},
      {"LANG", "C.UTF-8"},
      {"NO_AT_BRIDGE", "1"},
      {"QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none"},
      {"WLR_BACKENDS", "headless"},
      {"WLR_LIBINPUT_NO_DEVICES", "1"},
      {"WLR_RENDERER", "pixman"},
  };
  if (!display_.empty()) {
    variables["WAYLAND_DISPLAY"] = display_;
    variables["SWAYSOCK"] = socket_;
    variables["QT_QPA_PLATFORM"] = "wayland";
    variables["GDK_BACKEND"] = "wayland";
  }
  const bool verbose = std::getenv("TOLLVANE_TEST_VERBOSE") != nullptr;
  return std::make_unique<Process>(
      words, Process::Options{.input = Process::Input::written,
                              .output = Process::Output::read,
                              .variables = variables,
                              .errors = verbose ? std::nullopt : std::optional<std::filesystem::path>("/dev/null")});
}

std::optional<std::string> PrivateWayland::run(const std::vector<std::string>& command) {
  const std::unique_ptr<Process> program = start(command);
  program->closeInput();
  std::string printed = program->rest(patienceHere);
  return program->exitCode(patienceHere) == 0 ? std::optional(printed) : std::nullopt;
}

void PrivateWayland::startBar() {
  bar_ = start({"waybar"});
  const auto hasHost = [this] {
    const auto answer =
        run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
             "org.kde.StatusNotifierWatcher", "IsStatusNotifierHostRegistered"});
    return answer && answer->find("true") != std::string::npos;
  };
  require(waitUntil(hasHost, patienceHere), "waybar");
}

std::string PrivateWayland::registeredItems() {
  const auto items = run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                          "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"});
  return items && items->find('"') != std::string::npos ? *items : std::string();
}

std::string PrivateWayland::trayPixels() {
  return run({"grim", "-t", "ppm", "-g", std::to_string(bellX - 12) + ",0 26x26", "-"}).value_or("");
}

void PrivateWayland::point(const std::string& order) {
  pointer_->writeLine(order);
  require(pointer_->line(patienceHere) == "obeyed", "the pointer's " + order);
}

void PrivateWayland::moveTo(int x, int y) { point("move " + std::to_string(x) + " " + std::to_string(y)); }

void PrivateWayland::click(int x, int y, int button) {
  moveTo(x, y);
  point("press " + std::to_string(button));
  point("release " + std::to_string(button));
}

void PrivateWayland::key(const std::vector<std::string>& wtypeArguments) {
  std::vector<std::string> words{"wtype"};
  words.insert(words.end(), wtypeArguments.begin(), wtypeArguments.end());
  require(run(words).has_value(), "a key");
}

}  // namespace tollvane::test
