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

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/process.h"

namespace tollvane::test {

// Screens and panels may take longer than other programs.
inline constexpr std::chrono::milliseconds desktopPatience{20000};

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
  Process& bus() { return *bus_; }
  Process& screen() { return *server_; }

  // Starts a program in this desktop, with pipes at its standard input and output. The extra variables go over the
  // desktop's own.
  std::unique_ptr<Process> start(const std::vector<std::string>& command, const Variables& extra = {});

  // Runs a program to its end and returns what it printed; absent when it failed.
  std::optional<std::string> run(const std::vector<std::string>& command);

  // Returns when the panel shows status items.
  void startPanel();
  Process& panel() { return *panel_; }

  // The status items that the panel knows, as the watcher lists them: one text, empty when there is none.
  std::string registeredItems();

  // The whole screen, as a PNG file.
  void screenshot(const std::filesystem::path& file);

 private:
  Variables variablesWith(const Variables& extra) const;
  void startBus();
  void startScreen();
  void writePanelSettings();
  void stopStrays();

  Options options_;
  std::filesystem::path root_;
  std::string display_;
  // In order of their start; they are stopped in the opposite one.
  std::unique_ptr<Process> bus_;
  std::unique_ptr<Process> server_;
  std::unique_ptr<Process> windowManager_;
  std::unique_ptr<Process> panel_;
};

}  // namespace tollvane::test
