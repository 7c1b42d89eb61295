// A folder that looks like /proc, with made-up processes.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane::test {

class FakeProc {
 public:
  struct Process {
    Pid pid = 0;
    Pid parent = 1;
    std::uint64_t startTime = 0;
    std::string executable = {};  // empty: it cannot be read
    std::string command = {};     // empty: the last component of the executable
    std::string cgroup = "/";
    std::string environment = {};             // such as "A=1\0B=2"
    std::vector<std::string> arguments = {};  // behind the first one, which is the executable
  };

  FakeProc() {
    std::string name = (std::filesystem::temp_directory_path() / "tollvane-proc-XXXXXX").string();
    root_ = mkdtemp(name.data());
  }
  ~FakeProc() { std::filesystem::remove_all(root_); }
  FakeProc(const FakeProc&) = delete;
  FakeProc& operator=(const FakeProc&) = delete;

  void add(const Process& process) {
    const auto directory = root_ / std::to_string(process.pid);
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    const std::string file = std::filesystem::path(process.executable).filename().string();
    const std::string command = (process.command.empty() ? file : process.command).substr(0, 15);
    std::ofstream(directory / "stat") << process.pid << " (" << command << ") S " << process.parent
                                      << " 1 1 0 -1 4194560 0 0 0 0 0 0 0 0 20 0 1 0 " << process.startTime << " 0 0\n";
    std::ofstream(directory / "comm") << command << '\n';
    std::ofstream line(directory / "cmdline");
    line << process.executable << '\0';
    for (const std::string& argument : process.arguments) line << argument << '\0';
    std::ofstream(directory / "cgroup") << "0::" << process.cgroup << '\n';
    std::ofstream(directory / "environ") << process.environment;
    if (!process.executable.empty()) std::filesystem::create_symlink(process.executable, directory / "exe");
  }

  void remove(Pid pid) { std::filesystem::remove_all(root_ / std::to_string(pid)); }

  const std::filesystem::path& root() const { return root_; }

 private:
  std::filesystem::path root_;
};

}  // namespace tollvane::test
