// What the tests of the way to the source share: a private desktop with made-up applications, and the Linux platform,
// which runs in it as a program.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/private_desktop.h"
#include "tests/support/process.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {

class DesktopTest : public SharedSession<PrivateDesktop> {
 protected:
  explicit DesktopTest(PrivateDesktop::Options options = {.screen = true, .panel = false}) : SharedSession(options) {
    // A new window may get the number of a closed one, which still counts as the active window for a moment.
    if (options.screen) spoilSession();
    std::filesystem::create_directories(root() / ".local/share/applications");
    std::filesystem::create_directories(root() / ".config");
  }

  std::filesystem::path root() const { return desktop.root(); }

  std::filesystem::path entry(const std::string& id, const std::string& text) {
    return write(".local/share/applications/" + id + ".desktop", "[Desktop Entry]\nType=Application\n" + text);
  }

  std::filesystem::path write(const std::string& path, const std::string& text) const {
    std::filesystem::create_directories((root() / path).parent_path());
    std::ofstream(root() / path, std::ios::binary) << text;
    return root() / path;
  }

  // Writes a shell script, which can be run as a program.
  std::filesystem::path script(const std::string& path, const std::string& text) const {
    auto file = write(path, "#!/bin/sh\n" + text);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }

  std::string read(const std::string& path) const {
    std::ifstream file(root() / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void startProbe(const Variables& extra = {}) {
    probe = desktop.start({TOLLVANE_PROBES "/desktop_probe"}, extra);
    ASSERT_EQ(probe->line(desktopPatience), "ready");
  }

  // Sends one command to the probe and returns its answer.
  std::string ask(const std::string& command) {
    probe->writeLine(command);
    return probe->line(desktopPatience).value_or("(nothing)");
  }

  PrivateDesktop& desktop = session;
  std::unique_ptr<Process> probe;
};

}  // namespace tollvane::test
