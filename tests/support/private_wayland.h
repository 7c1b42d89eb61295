// A Wayland desktop of a test's own: a private session with headless sway, waybar with a tray at its top right, and a
// pointer. Everything runs as a user that is not root, since sway refuses to.
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
  static constexpr int bellX = 784;  // of the tray's only icon
  static constexpr int bellY = 13;
  static constexpr int leftButton = 272;  // buttons, as linux/input-event-codes.h counts them
  static constexpr int rightButton = 273;

  // `pointer`: the program wayland_pointer.
  explicit PrivateWayland(const std::string& pointer);

  // As in PrivateDesktop.
  std::unique_ptr<Process> start(const std::vector<std::string>& command);
  std::optional<std::string> run(const std::vector<std::string>& command) { return session_.run(command); }

  // As for a test that begins: an empty home for its programs, the pointer in the middle of the first workspace, and a
  // bar without icons.
  void renew();

  void startBar() { session_.tell("start bar"); }
  void stopBar() { session_.tell("stop bar"); }
  std::string registeredItems() { return session_.registeredItems(); }

  // The home of the programs that the test starts.
  std::filesystem::path root() const { return session_.home(); }

  void moveTo(int x, int y);
  void click(int x, int y, int button = leftButton);
  // In small steps, as of a hand: Qt 6.8's menus heed no pointer that jumps there.
  void approach(int x, int y);
  // A keyboard of its own comes and goes with each call, and a key may be lost before the compositor has told the
  // clients of it: repeat it until it has its effect.
  void key(const std::vector<std::string>& wtypeArguments);

  // The end of the bar, where the icon is: its pixels.
  std::string trayPixels();

 private:
  void point(const std::string& order);

  PrivateSession session_;
  std::unique_ptr<Process> pointer_;
  std::unique_ptr<Process> keyboard_;
};

}  // namespace tollvane::test
