// A Wayland desktop of a test's own: session bus, headless sway, waybar with a tray at its top right, and a pointer.
// Everything runs as a user that is not root, since sway refuses to; nothing of it outlives the object.
//
//   PrivateWayland desktop;
//   auto program = desktop.start({"menu_probe", ...});
//   desktop.click(PrivateWayland::bellX, PrivateWayland::bellY);
//
// One thread. Constructors and methods throw std::runtime_error when a part does not come up. All waiting polls a
// condition with a deadline.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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
  ~PrivateWayland();
  PrivateWayland(const PrivateWayland&) = delete;
  PrivateWayland& operator=(const PrivateWayland&) = delete;

  // As in PrivateDesktop.
  std::unique_ptr<Process> start(const std::vector<std::string>& command);
  std::optional<std::string> run(const std::vector<std::string>& command);

  void startBar();
  void stopBar() { bar_.reset(); }
  std::string registeredItems();

  // The home of whoever uses this desktop.
  const std::filesystem::path& root() const { return root_; }

  void moveTo(int x, int y);
  void click(int x, int y, int button = leftButton);
  // A keyboard of its own comes and goes with each call, and a key may be lost before the compositor has told the
  // clients of it: repeat it until it has its effect.
  void key(const std::vector<std::string>& wtypeArguments);

  // The end of the bar, where the icon is: its pixels.
  std::string trayPixels();

 private:
  void point(const std::string& order);
  void startSway();

  std::filesystem::path root_;
  std::string display_;
  std::string socket_;  // sway's own
  // In order of their start; they are stopped in the opposite one.
  std::unique_ptr<Process> bus_;
  std::unique_ptr<Process> sway_;
  std::unique_ptr<Process> pointer_;
  std::unique_ptr<Process> keyboard_;
  std::unique_ptr<Process> bar_;
};

}  // namespace tollvane::test
