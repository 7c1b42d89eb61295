#include "tests/platform/linux/apps/fake_system.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace tollvane::test {

namespace fs = std::filesystem;

namespace {

std::string nulTerminated(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined.append(text).push_back('\0');
  return joined;
}

}  // namespace

void writeFile(const fs::path& file, std::string_view content) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << content;
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

FakeSystem::FakeSystem() : processes_(directory_.path() / "proc") {
  fs::create_directories(directory_.path() / "proc/self/root");
  environment.dataFolders = {at("/home/share"), at("/usr/local/share"), at("/usr/share")};
  environment.configurationFolders = {at("/home/config"), at("/etc/xdg")};
  environment.userUnitFolders = {at("/home/config/systemd/user"), at("/usr/lib/systemd/user")};
  environment.systemUnitFolders = {at("/etc/systemd/system"), at("/usr/lib/systemd/system")};
  environment.searchPath = at("/usr/bin") + ":" + at("/snap/bin");
}

std::string FakeSystem::at(std::string_view path) const { return directory_.path().string() + std::string(path); }

std::string FakeSystem::program(std::string_view path, std::string_view content) {
  writeFile(at(path), content);
  fs::permissions(at(path), fs::perms::owner_all);
  return at(path);
}

void FakeSystem::link(std::string_view path, std::string_view target) {
  fs::create_directories(fs::path(at(path)).parent_path());
  fs::create_symlink(target.starts_with('/') ? at(target) : std::string(target), at(path));
}

fs::path FakeSystem::entry(std::string_view id, std::string_view text, std::string_view folder) {
  std::string whole = "[Desktop Entry]\nType=Application\n";
  for (const char c : text) {
    if (c == '@') {
      whole += directory_.path().string();
    } else {
      whole += c;
    }
  }
  fs::path file = at(folder) + "/applications/" + std::string(id) + ".desktop";
  writeFile(file, whole);
  return file;
}

void FakeSystem::process(const FakeProcess& process) {
  const fs::path folder = processes_.root() / std::to_string(process.pid);
  fs::remove_all(folder);
  fs::create_directories(folder);
  writeFile(folder / "stat", std::to_string(process.pid) + " (" + process.command + ") " + process.state + " " +
                                 std::to_string(process.parent) + " 1 1 0 -1 4194304 1 2 3 4 5 6 7 8 20 0 1 0 " +
                                 std::to_string(process.startTime) + " 1000 100 18446744073709551615\n");
  writeFile(folder / "comm", process.command + "\n");
  writeFile(folder / "cgroup", "0::" + process.cgroup + "\n");
  writeFile(folder / "environ", nulTerminated(process.environment));
  auto arguments = process.arguments;
  if (arguments.empty() && !process.executable.empty()) arguments = {process.executable};
  writeFile(folder / "cmdline", nulTerminated(arguments));
  // A process that has ended keeps its folder, but not its program.
  if (!process.executable.empty() && process.state != 'Z') fs::create_symlink(process.executable, folder / "exe");
  fs::create_directories(at("/home"));
  fs::create_symlink(at("/home"), folder / "cwd");
  if (process.flatpakInfo.empty()) {
    fs::create_directory_symlink("../self/root", folder / "root");
  } else {
    writeFile(folder / "root/.flatpak-info", process.flatpakInfo);
  }
}

DesktopEntries& FakeSystem::entries() {
  if (!entries_) entries_ = std::make_unique<DesktopEntries>(environment);
  return *entries_;
}

Applications& FakeSystem::applications() {
  if (!applications_) {
    background_ = std::make_unique<BackgroundPrograms>(entries());
    applications_ = std::make_unique<Applications>(processes_, entries(), windows, background_.get());
  }
  return *applications_;
}

LinuxWorkspace& FakeSystem::workspace() {
  if (!workspace_) workspace_ = std::make_unique<LinuxWorkspace>(applications(), clock_, raiser, launcher);
  return *workspace_;
}

std::optional<std::string> FakeSystem::idOf(Pid pid) {
  const auto application = applications().of(pid);
  if (!application || application->id.empty()) return std::nullopt;
  return application->id;
}

}  // namespace tollvane::test
