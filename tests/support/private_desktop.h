// A desktop of a test's own: home, runtime directory, session bus, X server, window manager and a panel with a status
// bar. Nothing of it touches the user's desktop, and nothing of it outlives the object: every program is stopped by
// its id, and dies by itself should the test be killed.
//
//   PrivateDesktop desktop({.tone = PrivateDesktop::Tone::dark});
//   auto program = desktop.start({"xclock"});
//   desktop.screenshot("panel.png");
//
// One thread. Constructors and methods throw std::runtime_error when a part does not come up. All waiting polls a
// condition with a deadline.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane::test {

// Polls until the condition holds; false when it still does not after the deadline.
bool eventually(const std::function<bool()>& condition,
                std::chrono::milliseconds deadline = std::chrono::milliseconds(20000));

// A program in the desktop. Destroying it stops it.
class DesktopProgram {
 public:
  DesktopProgram(pid_t pid, int input, int output) : pid_(pid), input_(input), output_(output) {}
  ~DesktopProgram();
  DesktopProgram(const DesktopProgram&) = delete;
  DesktopProgram& operator=(const DesktopProgram&) = delete;

  pid_t pid() const { return pid_; }
  bool running();
  // Its exit code, or 128 plus the signal that ended it; absent while it runs.
  std::optional<int> exitCode();

  // Sends one line to its standard input.
  void writeLine(std::string_view line);
  void closeInput();
  // Everything that it printed so far.
  const std::string& output();

  // Asks it to end, insists after two seconds, and returns when it is gone.
  void stop();
  // Ends it at once, as a crash would.
  void kill();

 private:
  void reap(int status);

  pid_t pid_;
  int input_;
  int output_;
  std::string printed_;
  std::optional<int> exitCode_;
};

class PrivateDesktop {
 public:
  enum class Tone { dark, light };

  struct Options {
    Tone tone = Tone::dark;
    bool screen = true;  // X server and window manager; without it there is only the bus
    bool panel = true;   // needs the screen
  };

  explicit PrivateDesktop(Options options);
  ~PrivateDesktop();
  PrivateDesktop(const PrivateDesktop&) = delete;
  PrivateDesktop& operator=(const PrivateDesktop&) = delete;

  const std::filesystem::path& root() const { return root_; }
  std::string busAddress() const;
  DesktopProgram& bus() { return *bus_; }

  // Starts a program in this desktop, with pipes at its standard input and output. The extra environment
  // ("NAME=value") goes over the desktop's own.
  std::unique_ptr<DesktopProgram> start(const std::vector<std::string>& arguments,
                                        const std::vector<std::string>& extraEnvironment = {});

  // Runs a program to its end and returns what it printed; absent when it failed.
  std::optional<std::string> run(const std::vector<std::string>& arguments);

  // Returns when the panel shows status items.
  void startPanel();
  DesktopProgram& panel() { return *panel_; }

  // The status items that the panel knows, as the watcher lists them: one text, empty when there is none.
  std::string registeredItems();

  // The whole screen, as a PNG file.
  void screenshot(const std::filesystem::path& file);

 private:
  std::vector<std::string> environmentFor(const std::vector<std::string>& extra) const;
  void startBus();
  void startScreen();
  void writePanelSettings();
  void stopStrays();

  Options options_;
  std::filesystem::path root_;
  std::string display_;
  // In order of their start; they are stopped in the opposite one.
  std::unique_ptr<DesktopProgram> bus_;
  std::unique_ptr<DesktopProgram> server_;
  std::unique_ptr<DesktopProgram> windowManager_;
  std::unique_ptr<DesktopProgram> panel_;
};

}  // namespace tollvane::test
