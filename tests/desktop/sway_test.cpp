// Windows under sway: those of other programs and Tollvane's own come forward, also from another workspace.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/private_wayland.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

namespace fs = std::filesystem;

class SwayTest : public SharedSession<PrivateWayland> {
 protected:
  SwayTest() : SharedSession(TOLLVANE_PROBES "/wayland_pointer") {
    fs::copy_file(TOLLVANE_PROBES "/desktop_probe", desktop.root() / "window");
    fs::create_directories(desktop.root() / ".local/share/applications");
    std::ofstream(desktop.root() / ".local/share/applications/window.desktop")
        << "[Desktop Entry]\nType=Application\nName=A Window\nExec=" << (desktop.root() / "window").string() << "\n";
  }
  std::string sway(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"swaymsg"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return desktop.run(command).value_or("");
  }
  // Asks the compositor.
  bool isInFront(const Process& program) {
    const std::string tree = sway({"-t", "get_tree", "-r"});
    const auto focused = tree.find("\"focused\": true");
    return focused != std::string::npos &&
           tree.find("\"pid\": " + std::to_string(program.pid()) + ",", focused) != std::string::npos;
  }
  std::unique_ptr<Process> startProbe(const std::string& program) {
    auto probe = desktop.start({program});
    EXPECT_EQ(probe->line(), "ready");
    return probe;
  }
  static std::string ask(Process& probe, const std::string& command) {
    probe.writeLine(command);
    return probe.line().value_or("(nothing)");
  }

  PrivateWayland& desktop = session;
};

TEST_F(SwayTest, AWindowComesForwardFromAnotherWorkspace) {
  const auto window = startProbe((desktop.root() / "window").string());
  window->writeLine("alert Here I am|and here I stay|OK");
  ASSERT_TRUE(waitUntil([&] { return isInFront(*window); })) << sway({"-t", "get_tree", "-r"});
  sway({"workspace", "2"});
  ASSERT_FALSE(isInFront(*window));
  const auto probe = startProbe(TOLLVANE_PROBES "/desktop_probe");
  EXPECT_EQ(ask(*probe, "activate " + std::to_string(window->pid())), "activated yes");
  EXPECT_TRUE(waitUntil([&] { return isInFront(*window); }));
}

TEST_F(SwayTest, TheSettingsWindowIsShownInFrontInItsSize) {
  const auto settings = desktop.start({TOLLVANE_PROBES "/settings_probe", "welcome"});
  settings->writeLine("show");
  ASSERT_TRUE(waitUntil([&] { return isInFront(*settings); })) << sway({"-t", "get_tree", "-r"});
  const std::string tree = sway({"-t", "get_tree"});
  EXPECT_NE(tree.find("\"Welcome\""), std::string::npos) << tree;
  EXPECT_NE(tree.find("\"tollvane\""), std::string::npos) << tree;
}

// As on any other compositor that lists its windows: without sway's own socket.
TEST_F(SwayTest, AWindowComesForwardThroughTheCompositorsList) {
  const auto window = startProbe((desktop.root() / "window").string());
  window->writeLine("alert Here I am|and here I stay|OK");
  ASSERT_TRUE(waitUntil([&] { return isInFront(*window); }));
  sway({"workspace", "2"});
  ASSERT_FALSE(isInFront(*window));
  const auto probe = desktop.start({TOLLVANE_PROBES "/desktop_probe"}, {{"SWAYSOCK", ""}});
  ASSERT_EQ(probe->line(), "ready");
  EXPECT_EQ(ask(*probe, "activate " + std::to_string(window->pid())), "activated yes");
  EXPECT_TRUE(waitUntil([&] { return isInFront(*window); }));
  EXPECT_EQ(ask(*probe, "activate " + std::to_string(probe->pid())), "activated no") << "it belongs to no application";
}

TEST_F(SwayTest, AProgramWithoutWindowsIsReportedToHaveNone) {
  const auto window = startProbe((desktop.root() / "window").string());
  const auto probe = startProbe(TOLLVANE_PROBES "/desktop_probe");
  EXPECT_EQ(ask(*probe, "activate " + std::to_string(window->pid())), "activated no");
}

}  // namespace
}  // namespace tollvane::test
