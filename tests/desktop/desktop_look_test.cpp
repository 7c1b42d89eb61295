// The look of menus on a desktop that shares its settings by XSETTINGS, with a real manager of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <csignal>
#include <fstream>
#include <optional>

#include "tests/desktop/menu_fixture.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

class DesktopLookTest : public SharedSession<PrivateDesktop> {
 protected:
  DesktopLookTest() : SharedSession(PrivateDesktop::Options{.panel = false}) { spoilSession(); }

  void share(const std::string& font, const std::string& theme) {
    std::ofstream(file_) << "Gtk/FontName \"" << font << "\"\nNet/ThemeName \"" << theme << "\"\n";
    if (manager_) {
      ::kill(manager_->pid(), SIGHUP);
    } else {
      manager_ = session.start({"xsettingsd", "-c", file_});
    }
  }
  bool becomes(const std::string& look) {
    return waitUntilOnTheBus([&] {
      bell_->tell("look");
      return bell_->program().printed().ends_with("look " + look + "\nobeyed\n");
    });
  }

  std::string file_ = (session.root() / "xsettingsd").string();
  std::unique_ptr<Process> manager_;
  std::optional<MenuBell> bell_;
};

TEST_F(DesktopLookTest, FontAndThemeAreTheDesktopsAndFollowIt) {
  share("DejaVu Serif 13", "Adwaita-dark");
  bell_.emplace(session, "five");
  EXPECT_TRUE(becomes("DejaVu Serif 13 dark")) << bell_->program().printed();
  share("DejaVu Sans Mono Bold 9", "Adwaita");
  EXPECT_TRUE(becomes("DejaVu Sans Mono 9 light")) << bell_->program().printed();
}

TEST_F(DesktopLookTest, AManagerThatComesLaterIsFollowed) {
  bell_.emplace(session, "five");
  bell_->tell("look");
  share("DejaVu Serif 17", "Adwaita-dark");
  EXPECT_TRUE(becomes("DejaVu Serif 17 dark")) << bell_->program().printed();
}

}  // namespace
}  // namespace tollvane::test
