// A private Wayland desktop for a test: a private session with headless sway, waybar with a tray at the top right, and
// a pointer. Everything runs as a user other than root, because sway refuses to run as root.
//
//   PrivateWayland desktop;
//   auto program = desktop.start({"menu_probe", ...});
//   desktop.click(PrivateWayland::bellX, PrivateWayland::bellY);
//
// See PrivateSession for threads, failures and the end.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_session.h"
#include "tests/support/process.h"

namespace tollvane::test {

class PrivateWayland {
 public:
  static constexpr int width = 800;
  static constexpr int height = 480;
  static constexpr int bellX = 784;  // the place of the tray's only icon
  static constexpr int bellY = 13;
  static constexpr int leftButton = 272;  // button numbers of linux/input-event-codes.h
  static constexpr int rightButton = 273;

  // `pointer`: the path of the program wayland_pointer.
  explicit PrivateWayland(const std::string& pointer);

  // Starts a program in this desktop, with pipes at its standard input and output. Variables in `extra` override those
  // of the desktop.
  std::unique_ptr<Process> start(const std::vector<std::string>& command, const Variables& extra = {});
  std::optional<std::string> run(const std::vector<std::string>& command) { return session_.run(command); }

  // Prepares the desktop for the next test: an empty home for its programs, the pointer in the middle of the first
  // workspace, and a bar without icons.
  void renew();

  void startBar() { session_.tell("start bar"); }
  void stopBar() { session_.tell("stop bar"); }
  std::string registeredItems() { return session_.registeredItems(); }

  // The home of the programs that the test starts.
  std::filesystem::path root() const { return session_.home(); }

  void moveTo(int x, int y);
  void click(int x, int y, int button = leftButton);
  // Moves the pointer there in small steps, as by hand: menus of Qt 6.8 ignore a pointer that jumps.
  void approach(int x, int y);
  // Each call adds a keyboard and removes it again. A key may be lost until the compositor has announced the keyboard
  // to the clients, so repeat the call until the key has its effect.
  void key(const std::vector<std::string>& wtypeArguments);

  // The pixels at the end of the bar, where the icon is.
  std::string trayPixels();

 private:
  void point(const std::string& order);

  PrivateSession session_;
  std::unique_ptr<Process> pointer_;
  std::unique_ptr<Process> keyboard_;
};

}  // namespace tollvane::test
