// The bell in a real panel, examined in screenshots.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <optional>
#include <set>

#include "tests/desktop/bell_fixture.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using Tone = PrivateDesktop::Tone;

// The place of the panel's last icon, at the right end of the bar at the top.
constexpr QRect iconArea(800 - 30, 0, 30, 26);

class PanelTest : public SharedSession<PrivateDesktop> {
 protected:
  PanelTest() : SharedSession(PrivateDesktop::Options{}) { desktop_.setTone(Tone::dark); }

  Bell& startBell() { return bell_.emplace(desktop_); }

  // A picture of the icon's place, taken after it has stopped changing.
  QImage icon() {
    const std::filesystem::path file = desktop_.root() / "screen.png";
    const auto look = [&] {
      desktop_.screenshot(file);
      return QImage(QString::fromStdString(file.string())).convertToFormat(QImage::Format_RGB32).copy(iconArea);
    };
    QImage last = look();
    waitUntil(
        [&] {
          const QImage now = look();
          return now == std::exchange(last, now);
        },
        desktopPatience);
    return last;
  }

  // Waits until the icon's place looks different from all pictures in `seen`; false if that does not happen in time.
  bool becomesOtherThan(const std::vector<QImage>& seen) {
    return waitUntil([&] { return std::find(seen.begin(), seen.end(), icon()) == seen.end(); }, desktopPatience);
  }

  bool isRegistered(const Bell& bell) {
    return waitUntil([&] { return desktop_.registeredItems().find(bell.service().toStdString()) != std::string::npos; },
                     desktopPatience);
  }

  PrivateDesktop& desktop_ = session;
  std::optional<Bell> bell_;
};

// The brightness of the pixel that differs most from the empty bar.
int inkBrightness(const QImage& icon, const QImage& bar) {
  int strongest = -1;
  int brightness = -1;
  for (int y = 0; y < icon.height(); ++y) {
    for (int x = 0; x < icon.width(); ++x) {
      const int ink = qGray(icon.pixel(x, y));
      const int difference = std::abs(ink - qGray(bar.pixel(x, y)));
      if (difference > strongest) {
        strongest = difference;
        brightness = ink;
      }
    }
  }
  return brightness;
}

int changedPixels(const QImage& icon, const QImage& bar) {
  int count = 0;
  for (int y = 0; y < icon.height(); ++y) {
    for (int x = 0; x < icon.width(); ++x) {
      count += std::abs(qGray(icon.pixel(x, y)) - qGray(bar.pixel(x, y))) > 60 ? 1 : 0;
    }
  }
  return count;
}

TEST_F(PanelTest, HollowBellFilledBellAndEmptyPanelLookDifferent) {
  const QImage none = icon();
  Bell& bell = startBell();
  bell.tell("image bell No sound yet");
  ASSERT_TRUE(isRegistered(bell));
  ASSERT_TRUE(becomesOtherThan({none}));
  const QImage hollow = icon();
  bell.tell("image bell.fill A sound");
  ASSERT_TRUE(becomesOtherThan({none, hollow}));
  const QImage filled = icon();
  EXPECT_LT(changedPixels(hollow, none), changedPixels(filled, none));
  bell.tell("image bell No sound yet");
  EXPECT_TRUE(becomesOtherThan({filled}));
  EXPECT_EQ(icon(), hollow);
}

TEST_F(PanelTest, OnADarkPanelTheBellIsLight) {
  const QImage none = icon();
  startBell().tell("image bell.fill");
  ASSERT_TRUE(becomesOtherThan({none}));
  EXPECT_GT(inkBrightness(icon(), none), qGray(none.pixel(2, 2)) + 100);
}

TEST_F(PanelTest, OnALightPanelTheBellIsDark) {
  desktop_.setTone(Tone::light);
  const QImage none = icon();
  startBell().tell("image bell.fill");
  ASSERT_TRUE(becomesOtherThan({none}));
  EXPECT_LT(inkBrightness(icon(), none), qGray(none.pixel(2, 2)) - 100);
}

TEST_F(PanelTest, APanelThatStartsLaterGetsTheBell) {
  desktop_.stopPanel();
  Bell& bell = startBell();
  bell.tell("image bell");
  desktop_.startPanel();
  EXPECT_TRUE(isRegistered(bell));
}

TEST_F(PanelTest, APanelThatCrashedGetsTheBellAgain) {
  const QImage none = icon();
  Bell& bell = startBell();
  bell.tell("image bell.fill");
  ASSERT_TRUE(isRegistered(bell));
  for (int crash = 0; crash < 2; ++crash) {
    desktop_.killPanel();
    desktop_.startPanel();
    ASSERT_TRUE(isRegistered(bell)) << "crash " << crash;
    EXPECT_TRUE(becomesOtherThan({none}));
  }
}

TEST_F(PanelTest, TheBellIsThereOnlyOnce) {
  Bell& bell = startBell();
  bell.tell("image bell");
  ASSERT_TRUE(isRegistered(bell));
  bell.tell("image bell.fill");
  const std::string items = desktop_.registeredItems();
  EXPECT_EQ(items.substr(0, 5), "as 1 ") << items;
}

TEST_F(PanelTest, TheBellLeavesThePanelWithItsProcess) {
  const QImage none = icon();
  Bell& bell = startBell();
  bell.tell("image bell.fill");
  ASSERT_TRUE(becomesOtherThan({none}));
  bell.program().kill();
  EXPECT_TRUE(waitUntil([&] { return icon() == none; }, desktopPatience));
}

}  // namespace
}  // namespace tollvane::test
