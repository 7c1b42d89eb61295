// A made-up system in a temporary directory: programs, desktop entries and processes, as files that look like the real
// ones. The directory is removed with the object. One thread.
//
//   FakeSystem system;
//   system.program("/usr/bin/player");
//   system.entry("player", "Name=Player\nExec=player %U\n");
//   system.process({.pid = 100, .executable = system.at("/usr/bin/player")});
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/apps/applications.h"
#include "platform/linux/workspace/linux_workspace.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/virtual_time.h"

namespace tollvane::test {

// Writes a file and makes the missing directories above it.
void writeFile(const std::filesystem::path& file, std::string_view content);

// The windows that a test says there are.
class FakeWindows : public X11Windows {
 public:
  const std::vector<X11Window>& normalWindows() override {
    ++questions;
    return windows;
  }

  std::vector<X11Window> windows;
  int questions = 0;
};

// Remembers the requests that it gets, and answers them as the test says.
struct FakeRaiser : WindowRaiser {
  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override {
    asked.push_back(target);
    done(answer);
  }

  std::vector<ActivationTarget> asked;
  Raised answer = Raised::yes;
};

struct FakeLauncher : Launcher {
  void launch(const std::filesystem::path& entry, const std::vector<std::string>& uris, Done done) override {
    launched.emplace_back(entry, uris);
    done(answer);
  }
  void open(const std::string& target, Done done) override {
    opened.push_back(target);
    done(answer);
  }

  std::vector<std::pair<std::filesystem::path, std::vector<std::string>>> launched;
  std::vector<std::string> opened;
  bool answer = true;
};

struct FakeProcess {
  Pid pid = 0;
  Pid parent = 1;
  std::string executable = {};  // empty: it cannot be read
  std::vector<std::string> arguments = {};
  std::vector<std::string> environment = {};
  std::string cgroup = "/init.scope";
  std::string command = "program";
  std::string flatpakInfo = {};
  std::uint64_t startTime = 1000;
  char state = 'S';
};

class FakeSystem {
 public:
  FakeSystem();

  // Where `path` of this system is in the real file system.
  std::string at(std::string_view path) const;

  std::string program(std::string_view path, std::string_view content = "#!/bin/sh\n");
  void link(std::string_view path, std::string_view target);

  // Writes the desktop entry `id` into `folder` and returns its path. "Type=Application" is added to `text`, and "@" in
  // it stands for the root of this system.
  std::filesystem::path entry(std::string_view id, std::string_view text, std::string_view folder = "/usr/share");

  void process(const FakeProcess& process);

  // What the methods below return is made at their first call. Until then the test may change the environment.
  DesktopEnvironment environment;
  FakeWindows windows;
  DesktopEntries& entries();
  Applications& applications();
  LinuxWorkspace& workspace();
  FakeRaiser raiser;
  FakeLauncher launcher;

  const ProcFs& processes() const { return processes_; }

  // The id of the application that the process belongs to; absent if there is no such application, or it has no id.
  std::optional<std::string> idOf(Pid pid);

 private:
  TemporaryDirectory directory_;
  ProcFs processes_;
  HurryingClock clock_;
  std::unique_ptr<DesktopEntries> entries_;
  std::unique_ptr<BackgroundPrograms> background_;
  std::unique_ptr<Applications> applications_;
  std::unique_ptr<LinuxWorkspace> workspace_;
};

}  // namespace tollvane::test
