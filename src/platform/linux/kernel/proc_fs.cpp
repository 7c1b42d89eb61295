#include "platform/linux/kernel/proc_fs.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/linux/kernel/folders.h"
#include "platform/linux/kernel/program_line.h"
#include "platform/posix/posix_files.h"
#include "support/ascii.h"

namespace tollvane {

namespace {

constexpr std::size_t mostOfASmallFile = 64 * 1024;
constexpr std::size_t mostOfACommandLine = 256 * 1024;
constexpr std::size_t mostOfAnEnvironment = 4 * 1024 * 1024;
constexpr std::string_view deleted = " (deleted)";

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

std::optional<std::string> linkTarget(const std::string& link) {
  char buffer[PATH_MAX];
  const ssize_t length = ::readlink(link.c_str(), buffer, sizeof buffer);
  if (length <= 0) return std::nullopt;
  return std::string(buffer, static_cast<std::size_t>(length));
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

}  // namespace

ProcFs::ProcFs(std::filesystem::path root) : root_(std::move(root)) {}

std::string ProcFs::path(Pid pid, std::string_view file) const {
  std::string path = root_.native();
  path.append("/").append(std::to_string(pid)).append("/").append(file);
  return path;
}

std::optional<ProcFs::Status> ProcFs::status(Pid pid) const {
  const auto text = readKernelFile(path(pid, "stat"), mostOfASmallFile);
  if (!text) return std::nullopt;
  // The second field is the program's name in parentheses, and may hold parentheses and spaces itself.
  const auto open = text->find('(');
  const auto close = text->rfind(')');
  if (close == std::string::npos || open >= close) return std::nullopt;
  std::string_view rest = std::string_view(*text).substr(close + 1);
  constexpr std::size_t state = 0, parentPid = 1, startTime = 19, count = 20;  // counted from behind the name
  std::array<std::string_view, count> fields;
  for (std::string_view& field : fields) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \n"), rest.size()));
    field = rest.substr(0, rest.find_first_of(" \n"));
    rest.remove_prefix(field.size());
  }
  const auto parent = ascii::number<Pid>(fields[parentPid]);
  const auto start = ascii::number<std::uint64_t>(fields[startTime]);
  if (!parent || !start) return std::nullopt;
  return Status{.parent = *parent,
                .state = fields[state].front(),
                .startTime = *start,
                .command = text->substr(open + 1, close - open - 1)};
}

std::optional<Pid> ProcFs::parentPid(Pid pid) const {
  const auto found = status(pid);
  return found ? std::optional(found->parent) : std::nullopt;
}

std::optional<std::string> ProcFs::executable(Pid pid) const {
  auto target = linkTarget(path(pid, "exe"));
  if (!target) return std::nullopt;
  if (target->ends_with(deleted) && !exists(*target)) target->resize(target->size() - deleted.size());
  return target;
}

// If we may not examine the process, its link exists, but cannot be read.
bool ProcFs::hasProgram(Pid pid) const {
  char buffer;
  return ::readlink(path(pid, "exe").c_str(), &buffer, sizeof buffer) >= 0 || errno != ENOENT;
}

std::vector<std::string> ProcFs::arguments(Pid pid) const {
  std::vector<std::string> arguments;
  const auto text = readKernelFile(path(pid, "cmdline"), mostOfACommandLine).value_or("");
  for (std::string_view rest = text; !rest.empty();) arguments.emplace_back(ascii::takePart(rest, '\0'));
  return arguments;
}

std::string ProcFs::command(Pid pid) const {
  auto text = readKernelFile(path(pid, "comm"), mostOfASmallFile).value_or("");
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

std::optional<std::string> ProcFs::environment(Pid pid, std::string_view name) const {
  auto values = environment(pid, std::span(&name, 1));
  return values.empty() ? std::nullopt : std::move(values.front());
}

std::vector<std::optional<std::string>> ProcFs::environment(Pid pid, std::span<const std::string_view> names) const {
  const auto text = readKernelFile(path(pid, "environ"), mostOfAnEnvironment);
  if (!text) return {};
  std::vector<std::optional<std::string>> values(names.size());
  for (std::string_view rest = *text; !rest.empty();) {
    const std::string_view variable = ascii::takePart(rest, '\0');
    const auto wanted = std::find_if(names.begin(), names.end(), [&](std::string_view name) {
      return !name.empty() && variable.starts_with(name) && variable.substr(name.size()).starts_with('=');
    });
    if (wanted == names.end()) continue;
    auto& known = values[static_cast<std::size_t>(wanted - names.begin())];
    if (!known) known = variable.substr(wanted->size() + 1);
  }
  return values;
}

std::string ProcFs::cgroup(Pid pid) const {
  const auto text = readKernelFile(path(pid, "cgroup"), mostOfASmallFile).value_or("");
  std::string_view unified, named;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = ascii::takePart(rest, '\n');
    if (line.starts_with("0::")) unified = line.substr(3);
    if (const auto at = line.find(":name=systemd:"); at != std::string_view::npos) named = line.substr(at + 14);
  }
  // If the old hierarchies are still in use, the units are in systemd's own one.
  return std::string(unified.size() > 1 || named.empty() ? unified : named);
}

std::optional<std::string> ProcFs::fileNamed(Pid pid, std::string_view argument) const {
  if (argument.empty()) return std::nullopt;
  if (argument.find('/') == std::string_view::npos)
    return findProgram(argument, environment(pid, "PATH").value_or(std::string(defaultSearchPath)));
  std::string file(argument);
  if (argument.front() != '/') {
    const auto working = linkTarget(path(pid, "cwd"));
    if (!working) return std::nullopt;
    file = *working + "/" + file;
  }
  if (!exists(file)) return std::nullopt;
  return std::filesystem::path(file).lexically_normal().string();
}

bool ProcFs::isNameOf(Pid pid, std::string_view argument, std::string_view executable) const {
  if (argument.empty()) return false;
  if (argument == executable) return true;
  if (argument.find('/') == std::string_view::npos) {
    // Most links are in the directory of what they point to, and a look there saves reading the environment.
    const auto beside = realPath(std::string(directoryOf(executable)) + "/" + std::string(argument));
    if (beside && *beside == executable) return true;
  }
  const auto file = fileNamed(pid, argument);
  return file && realPath(*file) == std::optional<std::string>(executable);
}

std::string ProcFs::programName(Pid pid) const {
  const auto program = executable(pid);
  if (!program) return command(pid);
  const std::vector<std::string> all = arguments(pid);
  if (isInterpreter(*program)) {
    if (const auto script = scriptOf(*program, all)) {
      const std::string_view name = lastComponent(*script);
      if (!name.empty()) return std::string(name);
    }
  }
  if (!all.empty() && isNameOf(pid, all.front(), *program)) return std::string(lastComponent(all.front()));
  return std::string(lastComponent(*program));
}

std::vector<Pid> ProcFs::all() const {
  std::vector<Pid> pids;
  const Directory directory(::opendir(root_.c_str()));
  if (!directory) return pids;
  while (const dirent* entry = ::readdir(directory.get())) {
    const auto pid = ascii::number<Pid>(entry->d_name);
    if (pid && *pid > 0) pids.push_back(*pid);
  }
  std::sort(pids.begin(), pids.end());
  return pids;
}

bool ProcFs::isOwn(Pid pid) const {
  struct stat status {};
  return ::stat(path(pid, "").c_str(), &status) == 0 && status.st_uid == ::getuid();
}

bool ProcFs::hasOurRoot(Pid pid) const {
  struct stat ours {
  }, theirs{};
  return ::stat((root_ / "self/root/").c_str(), &ours) == 0 && ::stat(path(pid, "root/").c_str(), &theirs) == 0 &&
         ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
}

}  // namespace tollvane
