// The menu on layer surfaces, in a real compositor with a real bar, opened with a pointer and used with keys.

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/private_wayland.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

constexpr std::chrono::milliseconds patienceHere{20000};

class MenuWaylandTest : public SharedSession<PrivateWayland> {
 protected:
  MenuWaylandTest() : SharedSession(TOLLVANE_PROBES "/wayland_pointer") {}

  struct Place {
    int x = 0, y = 0, width = 0, height = 0;
  };

  void start(const std::string& scenario) {
    desktop.moveTo(100, 300);
    empty = desktop.trayPixels();
    bell = desktop.start({TOLLVANE_PROBES "/menu_probe", TOLLVANE_BUNDLE "/icons", scenario});
    awaitBell();
  }
  // The bar draws an icon a moment after it has accepted the registration.
  void awaitBell() {
    ASSERT_TRUE(waitUntil([&] { return !desktop.registeredItems().empty(); }, patienceHere));
    ASSERT_TRUE(waitUntil([&] { return desktop.trayPixels() != empty; }, patienceHere));
  }
  void clickBell(int button = PrivateWayland::leftButton) {
    desktop.click(PrivateWayland::bellX, PrivateWayland::bellY, button);
  }
  void open() {
    const int before = count("opened ");
    clickBell();
    ASSERT_TRUE(prints("opened ", before + 1)) << bell->printed();
  }

  int count(const std::string& text) {
    const std::string printed = '\n' + bell->printed();
    int found = 0;
    for (std::size_t at = 0; (at = printed.find('\n' + text, at)) != std::string::npos; ++at) ++found;
    return found;
  }
  bool prints(const std::string& text, int times = 1) {
    return waitUntil([&] { return count(text) >= times; }, patienceHere);
  }
  bool pressUntil(const std::string& name, const std::function<bool()>& effect) {
    return waitUntil(
        [&] {
          if (effect()) return true;
          desktop.key({"-k", name});
          return waitUntil(effect, std::chrono::milliseconds(500));
        },
        patienceHere);
  }
  Place menu() {
    const std::string& printed = bell->printed();
    std::istringstream numbers(printed.substr(printed.rfind("opened ") + 7));
    Place place;
    numbers >> place.x >> place.y >> place.width >> place.height;
    return place;
  }

  PrivateWayland& desktop = session;
  std::unique_ptr<Process> bell;
  std::string empty;
};

TEST_F(MenuWaylandTest, AClickOpensItBelowTheBarAndAClickOnAnEntryChooses) {
  start("five");
  open();
  const Place place = menu();
  EXPECT_GE(place.y, 26);
  EXPECT_LE(place.x + place.width, PrivateWayland::width);
  desktop.approach(place.x + 40, place.y + place.height - 15);
  desktop.click(place.x + 40, place.y + place.height - 15);
  EXPECT_TRUE(prints("chosen quit"));
}

TEST_F(MenuWaylandTest, KeysChoose) {
  start("five");
  open();
  // If no entry is current yet, the first key only makes the first entry current.
  EXPECT_TRUE(pressUntil("Return", [&] { return count("chosen sound ") > 0; })) << bell->printed();
}

TEST_F(MenuWaylandTest, EscapeAndAClickOutsideCloseItAndTheBellOpensItAgain) {
  start("five");
  open();
  ASSERT_TRUE(pressUntil("Escape", [&] { return count("closed") > 0; }));
  ASSERT_TRUE(prints("gone", 1));
  open();
  desktop.click(40, 400);
  ASSERT_TRUE(prints("gone", 2));
  open();
  EXPECT_EQ(count("chosen"), 0);
}

TEST_F(MenuWaylandTest, EverySecondClickOnTheBellCloses) {
  start("five");
  for (int times = 1; times <= 5; ++times) {
    open();
    clickBell();
    ASSERT_TRUE(prints("gone", times));
    EXPECT_EQ(count("closed"), times);
    EXPECT_EQ(count("opened "), times);
  }
}

TEST_F(MenuWaylandTest, TheBellComesBackWithARestartedBar) {
  start("five");
  desktop.stopBar();
  desktop.startBar();
  awaitBell();
  open();
}

}  // namespace
}  // namespace tollvane::test
