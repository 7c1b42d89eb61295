#include "platform/linux/apps/proc_fs.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/linux/apps/file_bytes.h"
#include "platform/linux/apps/program_line.h"

namespace tollvane {

namespace {

constexpr std::size_t kSmallFile = 64 * 1024;
constexpr std::size_t kCommandLine = 256 * 1024;
constexpr std::size_t kEnvironment = 4 * 1024 * 1024;
constexpr std::string_view kDeleted = " (deleted)";
constexpr std::string_view kDefaultSearchPath = "/usr/local/bin:/usr/bin:/bin:/usr/local/games:/usr/games";

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

template <typename Number>
std::optional<Number> number(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

// Leaves the reason of a failure in errno.
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
  const auto text = readKernelFile(path(pid, "stat"), kSmallFile);
  if (!text) return std::nullopt;
  // The second field is the program's name in parentheses, and may hold parentheses and spaces itself.
  const auto close = text->rfind(')');
  if (close == std::string::npos) return std::nullopt;
  std::string_view rest = std::string_view(*text).substr(close + 1);
  Status status;
  constexpr int kState = 3, kParent = 4, kStartTime = 22;
  for (int field = kState; field <= kStartTime; ++field) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \n"), rest.size()));
    const std::string_view word = rest.substr(0, rest.find_first_of(" \n"));
    rest.remove_prefix(word.size());
    if (word.empty()) return std::nullopt;
    if (field == kState) status.state = word.front();
    if (field == kParent) {
      const auto parent = number<Pid>(word);
      if (!parent) return std::nullopt;
      status.parent = *parent;
    }
    if (field == kStartTime) {
      const auto start = number<std::uint64_t>(word);
      if (!start) return std::nullopt;
      status.startTime = *start;
    }
  }
  return status;
}

std::optional<std::string> ProcFs::executable(Pid pid) const {
  auto target = linkTarget(path(pid, "exe"));
  if (!target) return std::nullopt;
  if (target->ends_with(kDeleted) && !exists(*target)) target->resize(target->size() - kDeleted.size());
  return target;
}

std::vector<std::string> ProcFs::arguments(Pid pid) const {
  std::vector<std::string> arguments;
  const auto text = readKernelFile(path(pid, "cmdline"), kCommandLine);
  if (!text) return arguments;
  for (std::size_t begin = 0; begin < text->size();) {
    const std::size_t end = std::min(text->find('\0', begin), text->size());
    arguments.push_back(text->substr(begin, end - begin));
    begin = end + 1;
  }
  return arguments;
}

std::string ProcFs::command(Pid pid) const {
  auto text = readKernelFile(path(pid, "comm"), kSmallFile).value_or("");
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

std::optional<std::string> ProcFs::environment(Pid pid, std::string_view name) const {
  const auto text = readKernelFile(path(pid, "environ"), kEnvironment);
  if (!text || name.empty()) return std::nullopt;
  const std::string_view all = *text;
  for (std::size_t begin = 0; begin < all.size();) {
    const std::size_t end = std::min(all.find('\0', begin), all.size());
    const std::string_view variable = all.substr(begin, end - begin);
    if (variable.size() > name.size() && variable[name.size()] == '=' && variable.starts_with(name))
      return std::string(variable.substr(name.size() + 1));
    begin = end + 1;
  }
  return std::nullopt;
}

std::string ProcFs::cgroup(Pid pid) const {
  const auto text = readKernelFile(path(pid, "cgroup"), kSmallFile).value_or("");
  std::string_view rest = text;
  std::string_view unified, named;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.starts_with("0::")) unified = line.substr(3);
    if (const auto at = line.find(":name=systemd:"); at != std::string_view::npos) named = line.substr(at + 14);
  }
  // Where the old hierarchies are still in use, the units stand in systemd's own one.
  return std::string(unified.size() > 1 || named.empty() ? unified : named);
}

std::optional<std::string> ProcFs::fileNamed(Pid pid, std::string_view argument) const {
  if (argument.empty()) return std::nullopt;
  std::string file(argument);
  if (argument.front() != '/') {
    const auto working = linkTarget(path(pid, "cwd"));
    if (argument.find('/') != std::string_view::npos) {
      if (!working) return std::nullopt;
      file = *working + "/" + file;
    } else {
      const auto variable = environment(pid, "PATH");
      std::string_view folders = variable ? std::string_view(*variable) : kDefaultSearchPath;
      while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        std::string candidate = std::string(folder) + "/" + file;
        if (folder.starts_with('/') && ::access(candidate.c_str(), X_OK) == 0) return candidate;
      }
      return std::nullopt;
    }
  }
  if (!exists(file)) return std::nullopt;
  return std::filesystem::path(file).lexically_normal().string();
}

bool ProcFs::isNameOf(Pid pid, std::string_view argument, std::string_view executable) const {
  if (argument.empty()) return false;
  if (argument == executable) return true;
  if (argument.find('/') == std::string_view::npos) {
    // Links mostly stand beside what they point to, and a look there spares reading the environment.
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
    const auto pid = number<Pid>(entry->d_name);
    if (pid && *pid > 0) pids.push_back(*pid);
  }
  std::sort(pids.begin(), pids.end());
  return pids;
}

bool ProcFs::isOwn(Pid pid) const {
  struct stat status {};
  return ::stat(path(pid, "").c_str(), &status) == 0 && status.st_uid == ::getuid();
}

}  // namespace tollvane
