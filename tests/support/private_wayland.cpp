#include "tests/support/private_wayland.h"

#include <set>
#include <stdexcept>
#include <thread>

namespace tollvane::test {
namespace {

constexpr std::chrono::milliseconds patienceHere{20000};

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error("the private Wayland desktop did not come up: " + what);
}

// Whether all pixels of a picture in PPM format, with three bytes a pixel, have the same colour.
bool isBare(const std::string& picture) {
  std::size_t start = 0;
  for (int line = 0; line < 3; ++line) start = picture.find('\n', start) + 1;
  std::set<std::string> colours;
  for (; start + 3 <= picture.size(); start += 3) colours.insert(picture.substr(start, 3));
  return colours.size() == 1;
}

}  // namespace

PrivateWayland::PrivateWayland(const std::string& pointer)
    : session_({"--wayland", "sway", "--screen", std::to_string(width) + "x" + std::to_string(height)}) {
  const auto startPart = [this](const std::vector<std::string>& command) {
    return session_.start(command, Process::Input::written, Process::Output::read, {{"TOLLVANE_PART_OF_SESSION", "1"}});
  };
  pointer_ = startPart({pointer, std::to_string(width), std::to_string(height)});
  require(pointer_->line(patienceHere) == "ready", "the pointer");
  // This keyboard stays. If each key's keyboard were the only one, the seat would lose it after the key, and windows
  // would lose the focus.
  keyboard_ = startPart({"wtype", "-k", "Shift_L", "-s", "3600000"});
  startBar();
}

std::unique_ptr<Process> PrivateWayland::start(const std::vector<std::string>& command, const Variables& extra) {
  return session_.start(command, Process::Input::written, Process::Output::read, extra);
}

void PrivateWayland::renew() {
  session_.renew();
  moveTo(width / 2, height / 2);
  require(run({"swaymsg", "workspace", "1"}).has_value(), "the first workspace");
  require(waitUntil([this] { return registeredItems().empty() && isBare(trayPixels()); }, patienceHere),
          "a bar without the icons of the test before");
}

std::string PrivateWayland::trayPixels() {
  return run({"grim", "-t", "ppm", "-g", std::to_string(bellX - 12) + ",0 26x26", "-"}).value_or("");
}

void PrivateWayland::point(const std::string& order) {
  pointer_->writeLine(order);
  require(pointer_->line(patienceHere) == "obeyed", "the pointer's " + order);
}

void PrivateWayland::moveTo(int x, int y) { point("move " + std::to_string(x) + " " + std::to_string(y)); }

void PrivateWayland::approach(int x, int y) {
  for (int step = 16; step >= 0; --step) {
    moveTo(x - step, y);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

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
