#include "support/private_desktop.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

// What would let a program find the user's own desktop, or change what it looks like.
constexpr std::string_view kForeignVariables[] = {
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

bool isForeign(std::string_view variable) {
  for (const std::string_view prefix : kForeignVariables) {
    if (variable.substr(0, prefix.size()) == prefix) {
      return true;
    }
  }
  return false;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) {
    result.push_back(const_cast<char*>(text.c_str()));
  }
  result.push_back(nullptr);
  return result;
}

struct Pipe {
  std::array<int, 2> ends{-1, -1};
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
  }
};

// Only calls that are safe between fork and exec in a program with threads.
[[noreturn]] void becomeProgram(pid_t parent, int input, int output, int quiet, char* const* arguments,
                                char* const* environment) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(127);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  if (quiet >= 0) {
    dup2(quiet, STDERR_FILENO);
  }
  execvpe(arguments[0], arguments, environment);
  _exit(127);
}

std::filesystem::path makeRoot() {
  std::string name = (std::filesystem::temp_directory_path() / "tollvane-desktop-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
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
  if (!condition) {
    throw std::runtime_error("the private desktop did not come up: " + what);
  }
}

}  // namespace

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(10ms);
  }
  return true;
}

DesktopProgram::~DesktopProgram() {
  stop();
  closeInput();
  close(output_);
}

void DesktopProgram::reap(int status) { exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

bool DesktopProgram::running() {
  int status = 0;
  if (!exitCode_ && waitpid(pid_, &status, WNOHANG) == pid_) {
    reap(status);
  }
  return !exitCode_;
}

std::optional<int> DesktopProgram::exitCode() {
  running();
  return exitCode_;
}

void DesktopProgram::writeLine(std::string_view line) {
  std::string bytes(line);
  bytes += '\n';
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const ssize_t written = write(input_, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "writing to a program");
    }
    rest.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
  }
}

void DesktopProgram::closeInput() {
  if (input_ >= 0) {
    close(std::exchange(input_, -1));
  }
}

const std::string& DesktopProgram::output() {
  std::array<char, 4096> buffer;
  ssize_t count = 0;
  while ((count = read(output_, buffer.data(), buffer.size())) > 0) {
    printed_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return printed_;
}

void DesktopProgram::stop() {
  if (running()) {
    ::kill(pid_, SIGTERM);
    if (!eventually([this] { return !running(); }, 2000ms)) {
      kill();
    }
  }
}

void DesktopProgram::kill() {
  if (running()) {
    ::kill(pid_, SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
    reap(status);
  }
}

PrivateDesktop::PrivateDesktop(Options options) : options_(options), root_(makeRoot()) {
  // A program that ended must not take the test with it when it is written to.
  signal(SIGPIPE, SIG_IGN);
  std::filesystem::create_directory(root_ / "run");
  std::filesystem::permissions(root_ / "run", std::filesystem::perms::owner_all);
  startBus();
  if (options_.screen) {
    startScreen();
    writePanelSettings();
  }
  if (options_.panel) {
    startPanel();
  }
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

std::vector<std::string> PrivateDesktop::environmentFor(const std::vector<std::string>& extra) const {
  std::vector<std::string> own = {
      "HOME=" + root_.string(),
      "XDG_RUNTIME_DIR=" + (root_ / "run").string(),
      "XDG_CURRENT_DESKTOP=XFCE",
      "DBUS_SESSION_BUS_ADDRESS=" + busAddress(),
      "NO_AT_BRIDGE=1",
      "LANG=C.UTF-8",
      display_.empty() ? std::string("QT_QPA_PLATFORM=offscreen") : "DISPLAY=" + display_,
  };
  own.insert(own.end(), extra.begin(), extra.end());

  std::map<std::string, std::string> variables;
  const auto set = [&](std::string_view assignment) {
    const std::size_t equals = assignment.find('=');
    variables[std::string(assignment.substr(0, equals))] = assignment.substr(equals + 1);
  };
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!isForeign(*variable)) {
      set(*variable);
    }
  }
  for (const std::string& variable : own) {
    set(variable);
  }
  std::vector<std::string> environment;
  for (const auto& [name, value] : variables) {
    environment.push_back(name + '=' + value);
  }
  return environment;
}

std::unique_ptr<DesktopProgram> PrivateDesktop::start(const std::vector<std::string>& arguments,
                                                      const std::vector<std::string>& extraEnvironment) {
  const std::vector<std::string> environment = environmentFor(extraEnvironment);
  const std::vector<char*> argv = pointers(arguments);
  const std::vector<char*> envp = pointers(environment);
  const Pipe input;
  const Pipe output;
  const int quiet = std::getenv("TOLLVANE_TEST_VERBOSE") == nullptr ? open("/dev/null", O_WRONLY | O_CLOEXEC) : -1;
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0) {
    becomeProgram(parent, input.ends[0], output.ends[1], quiet, argv.data(), envp.data());
  }
  close(input.ends[0]);
  close(output.ends[1]);
  if (quiet >= 0) {
    close(quiet);
  }
  fcntl(output.ends[0], F_SETFL, O_NONBLOCK);
  require(pid > 0, arguments.front());
  return std::make_unique<DesktopProgram>(pid, input.ends[1], output.ends[0]);
}

std::optional<std::string> PrivateDesktop::run(const std::vector<std::string>& arguments) {
  const std::unique_ptr<DesktopProgram> program = start(arguments);
  program->closeInput();
  const bool ended = eventually([&] {
    program->output();
    return !program->running();
  });
  if (!ended || program->exitCode() != 0) {
    return std::nullopt;
  }
  return program->output();
}

void PrivateDesktop::startBus() {
  bus_ = start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + busAddress()});
  require(eventually([this] { return accepts(root_ / "run/bus") || !bus_->running(); }) && bus_->running(),
          "dbus-daemon");
}

void PrivateDesktop::startScreen() {
  // Without -noreset the server would start over when the first client that only looks around leaves.
  server_ = start({"Xvfb", "-displayfd", "1", "-screen", "0", "800x480x24", "-nolisten", "tcp", "-noreset"});
  require(eventually([this] { return server_->output().find('\n') != std::string::npos || !server_->running(); }) &&
              server_->running(),
          "Xvfb");
  display_ = ":" + server_->output().substr(0, server_->output().find('\n'));
  windowManager_ = start({"openbox", "--sm-disable"});
  require(eventually([this] {
            const auto property = run({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"});
            return property && property->find("window id") != std::string::npos;
          }),
          "openbox");
}

void PrivateDesktop::writePanelSettings() {
  const std::filesystem::path directory = root_ / ".config/xfce4/xfconf/xfce-perchannel-xml";
  std::filesystem::create_directories(directory);
  std::ofstream(directory / "xfce4-panel.xml") << R"(<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value=")"
                                               << (options_.tone == Tone::dark ? "true" : "false") << R"("/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
)";
}

void PrivateDesktop::startPanel() {
  panel_ = start({"xfce4-panel", "--disable-wm-check"});
  require(eventually([this] {
            const auto host =
                run({"busctl", "--user", "get-property", "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                     "org.kde.StatusNotifierWatcher", "IsStatusNotifierHostRegistered"});
            return host && host->find("true") != std::string::npos;
          }),
          "xfce4-panel");
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
      if (name.find_first_not_of("0123456789") != std::string::npos) {
        continue;
      }
      std::ifstream file(entry.path() / "environ", std::ios::binary);
      const std::string environment{std::istreambuf_iterator<char>(file), {}};
      if (('\0' + environment).find('\0' + mark + '\0') != std::string::npos) {
        found.push_back(static_cast<pid_t>(std::stol(name)));
      }
    }
    return found;
  };
  const auto signalAll = [&](int number) {
    for (const pid_t pid : strays()) {
      ::kill(pid, number);
    }
  };
  signalAll(SIGTERM);
  if (!eventually([&] { return strays().empty(); }, 2000ms)) {
    signalAll(SIGKILL);
  }
}

}  // namespace tollvane::test
