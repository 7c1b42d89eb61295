// A private desktop for a test: a private session with an X server, a window manager and a panel with a status bar.
//
//   PrivateDesktop desktop({.tone = PrivateDesktop::Tone::dark});
//   auto program = desktop.start({"xclock"});
//   desktop.screenshot("panel.png");
//
// See PrivateSession for threads, failures and the end.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_session.h"
#include "tests/support/process.h"

namespace tollvane::test {

// Screens and panels may take longer than other programs.
inline constexpr std::chrono::milliseconds desktopPatience{20000};

class PrivateDesktop {
 public:
  enum class Tone { dark, light };

  struct Options {
    Tone tone = Tone::dark;
    bool screen = true;            // X server and window manager; if false, there is only the bus
    bool panel = true;             // needs `screen`
    const char* size = "800x480";  // of the screen, in pixels
  };

  explicit PrivateDesktop(Options options);

  // Prepares the desktop for the next test: an empty home for its programs, and the pointer in the middle of the first
  // workspace. Throws if windows or status items of the last test do not go away.
  void renew();

  // The home of the programs that the test starts.
  std::filesystem::path root() const { return session_.home(); }
  std::filesystem::path runtimeDirectory() const { return session_.runtimeDirectory(); }
  std::string busAddress() const { return session_.variables().at("DBUS_SESSION_BUS_ADDRESS"); }
  const Variables& variables() const { return session_.variables(); }

  // Starts a program in this desktop, with pipes at its standard input and output. Variables in `extra` override those
  // of the desktop.
  std::unique_ptr<Process> start(const std::vector<std::string>& command, const Variables& extra = {});

  // Runs a program to its end and returns what it printed; absent if it failed.
  std::optional<std::string> run(const std::vector<std::string>& command) { return session_.run(command); }

  // Returns when the panel shows status items.
  void startPanel();
  void stopPanel();
  bool hasPanel() const { return hasPanel_; }
  void setTone(Tone tone);

  // Kills a part, as if it crashed.
  void killBus() { session_.tell("kill bus"); }
  void killScreen() { session_.tell("kill screen"); }
  void killPanel();

  // Clicks with the left button. The pointer moves there in small steps, as by hand: menus of Qt 6.8 ignore one that
  // jumps.
  void clickAt(int x, int y);

  // The status items that the panel knows, as the watcher lists them; empty if it knows no item.
  std::string registeredItems() { return session_.registeredItems(); }

  // Writes a picture of the whole screen, as a PNG file.
  void screenshot(const std::filesystem::path& file);

  // The pixels at the end of the panel, where the last icon is, each as a byte of grey.
  std::string endOfPanel();
  // Whether endOfPanel() shows an icon. Without one it has four shades of grey at most.
  bool showsIcon();

 private:
  bool isTidy();

  bool hasScreen_;
  bool hasPanel_;
  Tone tone_;
  PrivateSession session_;
};

}  // namespace tollvane::test
