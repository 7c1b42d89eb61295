// Gives arbitrary bytes to the readers of /proc, as every file of one process at once.

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/kernel/proc_fs.h"
#include "platform/linux/kernel/program_line.h"
#include "platform/posix/posix_files.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;

constexpr Pid pid = 4711;
constexpr std::array files = {"stat", "cmdline", "comm", "environ", "cgroup"};

class ProcTree {
 public:
  ProcTree() {
    std::string name = (fs::temp_directory_path() / "proc-fuzz-XXXXXX").string();
    FUZZ_REQUIRE(::mkdtemp(name.data()) != nullptr);
    root = name;
    fs::create_directory(process());
    fs::create_symlink("/usr/bin/python3", process() / "exe");
    fs::create_symlink("/", process() / "cwd");
  }
  ~ProcTree() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  fs::path process() const { return root / std::to_string(pid); }

  fs::path root;
};

void checkArguments(const std::vector<std::string>& arguments, std::string_view input) {
  std::size_t total = 0;
  for (const auto& argument : arguments) total += argument.size();
  FUZZ_REQUIRE(total <= input.size());
  FUZZ_REQUIRE(withoutPrefixes(arguments).size() <= arguments.size());
  for (const auto* interpreter : {"python3", "sh", "java", "node", "electron", "mono"})
    scriptOf(interpreter, arguments);
}

void check(std::string_view input) {
  static const ProcTree tree;
  PosixFiles disk;
  for (const auto* name : files) FUZZ_REQUIRE(disk.write(tree.process() / name, input));
  const ProcFs processes(tree.root);
  if (const auto status = processes.status(pid)) FUZZ_REQUIRE(status->command.size() < input.size());
  FUZZ_REQUIRE(processes.command(pid).size() <= input.size());
  FUZZ_REQUIRE(processes.cgroup(pid).size() <= input.size());
  checkArguments(processes.arguments(pid), input);
  if (const auto path = processes.environment(pid, "PATH"))
    FUZZ_REQUIRE(input.find("PATH=" + *path) != std::string_view::npos);
  FUZZ_REQUIRE(processes.programName(pid).find('/') == std::string::npos);
  processes.fileNamed(pid, input.substr(0, 200));
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tollvane::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
