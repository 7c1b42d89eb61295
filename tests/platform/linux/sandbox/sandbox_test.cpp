// What a process in a sandbox cannot do, and what it still can. Each attempt is made by a process of its own. What is
// to be refused is also tried without the sandbox, where it must be possible.
#include "platform/linux/sandbox/sandbox.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

struct Attempt {
  const char* what;
  // Negative if it fails, with the reason in errno. `file` exists and is this attempt's own.
  long (*make)(const char* file);
};

struct Outcome {
  enum class Kind { possible, refused, otherError, endedBySignal };
  Kind kind;
  int number;  // the error, or the signal
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  static constexpr const char* kinds[] = {"possible", "refused with error", "error", "ended by signal"};
  return out << kinds[static_cast<int>(outcome.kind)] << ' ' << outcome.number;
}

constexpr int noSandbox = 255;

Outcome outcomeOf(std::optional<Sandbox> sandbox, const Attempt& attempt) {
  const test::TemporaryDirectory folder;
  const std::string file = (folder / "file").string();
  std::ofstream(file) << "text";
  const pid_t child = fork();
  if (child == 0) {
    if (sandbox && !enterSandbox(*sandbox)) _exit(noSandbox);
    errno = 0;
    _exit(attempt.make(file.c_str()) < 0 ? errno : 0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return {Outcome::Kind::otherError, errno};
  if (WIFSIGNALED(status)) return {Outcome::Kind::endedBySignal, WTERMSIG(status)};
  const int error = WEXITSTATUS(status);
  if (error == 0) return {Outcome::Kind::possible, 0};
  const bool refused = error == EPERM || error == EACCES || error == EEXIST || error == ENOSYS;
  return {refused ? Outcome::Kind::refused : Outcome::Kind::otherError, error};
}

void expectRefused(Sandbox sandbox, const std::vector<Attempt>& attempts) {
  for (const Attempt& attempt : attempts) {
    const Outcome outside = outcomeOf(std::nullopt, attempt);
    EXPECT_TRUE(outside.kind == Outcome::Kind::possible) << "without a sandbox, " << attempt.what << ": " << outside;
    const Outcome inside = outcomeOf(sandbox, attempt);
    EXPECT_TRUE(inside.kind == Outcome::Kind::refused) << attempt.what << ": " << inside;
  }
}

void expectPossible(Sandbox sandbox, const std::vector<Attempt>& attempts) {
  for (const Attempt& attempt : attempts) {
    const Outcome inside = outcomeOf(sandbox, attempt);
    EXPECT_TRUE(inside.kind == Outcome::Kind::possible) << attempt.what << ": " << inside;
  }
}

long startProgram(const char*) {
  char program[] = "true";
  char* const arguments[] = {program, nullptr};
  return execve("/bin/true", arguments, environ);
}

// A child of the attempt's process, made by this system call.
template <long call>
long makeProcess(const char*) {
  const long child = call == SYS_clone ? syscall(call, SIGCHLD, 0, 0, 0, 0) : syscall(call);
  if (child == 0) _exit(0);
  return child;
}

long readMemory(const char*) {
  char from = 'a';
  char to = 0;
  const iovec here{&to, 1};
  const iovec there{&from, 1};
  return process_vm_readv(getpid(), &here, 1, &there, 1, 0);
}

template <int flags>
long openFile(const char* file) {
  return open(file, flags, 0600);
}

std::string besides(const char* file) { return std::string(file) + "2"; }

long listenAtSocket(const char*) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  const sockaddr family{AF_UNIX, {}};
  return bind(socket, &family, sizeof family.sa_family) == 0 ? listen(socket, 1) : -1;
}

template <int family, int type>
long makeSocket(const char*) {
  return socket(family, type, 0);
}

long mapMemory(int protection) {
  return mmap(nullptr, 4096, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED ? -1 : 0;
}

const std::vector<Attempt> neverNeeded = {
    {"start a program", startProgram},
    {"fork", makeProcess<SYS_clone>},
#ifdef SYS_fork
    {"fork in the old way", makeProcess<SYS_fork>},
#endif
    {"leave the namespaces", [](const char*) { return static_cast<long>(unshare(0)); }},
    {"be traced", [](const char*) { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }},
    {"read a process's memory", readMemory},
    {"send a signal", [](const char*) { return static_cast<long>(kill(getppid(), SIGCONT)); }},
    {"send a signal to a thread", [](const char*) { return syscall(SYS_tgkill, getppid(), getppid(), SIGCONT); }},
    {"open a file for writing", openFile<O_WRONLY>},
    {"open a file for reading and writing", openFile<O_RDWR>},
    {"open a file for appending", openFile<O_WRONLY | O_APPEND>},
    {"empty a file", openFile<O_RDONLY | O_TRUNC>},
    {"create a file", [](const char* file) { return openFile<O_RDONLY | O_CREAT | O_EXCL>(besides(file).c_str()); }},
    {"create a file in the old way", [](const char* file) { return static_cast<long>(creat(file, 0600)); }},
    {"shorten a file", [](const char* file) { return static_cast<long>(truncate(file, 0)); }},
    {"remove a file", [](const char* file) { return static_cast<long>(unlink(file)); }},
    {"rename a file", [](const char* file) { return static_cast<long>(rename(file, besides(file).c_str())); }},
    {"link a file", [](const char* file) { return static_cast<long>(link(file, besides(file).c_str())); }},
    {"make a symbolic link", [](const char* file) { return static_cast<long>(symlink(file, besides(file).c_str())); }},
    {"make a folder", [](const char* file) { return static_cast<long>(mkdir(besides(file).c_str(), 0700)); }},
    {"make a pipe in the file system",
     [](const char* file) { return static_cast<long>(mkfifo(besides(file).c_str(), 0600)); }},
    {"change a file's mode", [](const char* file) { return static_cast<long>(chmod(file, 0777)); }},
    {"change an open file's mode",
     [](const char* file) { return static_cast<long>(fchmod(open(file, O_RDONLY | O_CLOEXEC), 0777)); }},
    {"change a file's time", [](const char* file) { return static_cast<long>(utimensat(AT_FDCWD, file, nullptr, 0)); }},
    {"serve a socket", listenAtSocket},
};

// On 32-bit x86, socketcall() makes sockets too, and a filter does not see its arguments.
#ifdef __i386__
constexpr bool seesFamilies = false;
#else
constexpr bool seesFamilies = true;
#endif

const std::vector<Attempt> network = {
    {"make a socket for the internet", makeSocket<AF_INET, SOCK_STREAM>},
    {"make a socket for datagrams", makeSocket<AF_INET, SOCK_DGRAM>},
    {"make a socket for the kernel", makeSocket<AF_NETLINK, SOCK_RAW>},
};

const std::vector<Attempt> neededByListeners = {
    {"read a file", openFile<O_RDONLY | O_CLOEXEC>},
    {"read a folder", [](const char*) { return openFile<O_RDONLY | O_DIRECTORY>("/proc/self/task"); }},
    {"find out another process's program",
     [](const char*) {
       char program[4096];
       const std::string link = "/proc/" + std::to_string(getppid()) + "/exe";
       return static_cast<long>(readlink(link.c_str(), program, sizeof program));
     }},
    {"start a thread",
     [](const char*) {
       long result = -1;
       std::thread([&result] { result = 0; }).join();
       return result;
     }},
    {"load a library", [](const char*) { return dlopen("libm.so.6", RTLD_NOW) ? 0L : -1L; }},
    {"share memory",
     [](const char*) { return static_cast<long>(ftruncate(memfd_create("shared", MFD_CLOEXEC), 4096)); }},
    {"make a local socket", makeSocket<AF_UNIX, SOCK_STREAM>},
    {"watch a folder",
     [](const char*) { return static_cast<long>(inotify_add_watch(inotify_init1(0), "/", IN_CREATE)); }},
};

TEST(SandboxTest, AListenerOfThisComputerCanOnlyListen) {
  expectRefused(Sandbox::localListener, neverNeeded);
  if (seesFamilies) expectRefused(Sandbox::localListener, network);
  expectPossible(Sandbox::localListener, neededByListeners);
}

TEST(SandboxTest, AListenerReachesOtherComputersIfItMust) {
  expectRefused(Sandbox::listener, neverNeeded);
  expectPossible(Sandbox::listener, network);
  expectPossible(Sandbox::listener, neededByListeners);
}

TEST(SandboxTest, ARelayOnlyPassesBytesOn) {
  expectRefused(Sandbox::relay, neverNeeded);
  if (seesFamilies) expectRefused(Sandbox::relay, network);
  expectRefused(
      Sandbox::relay,
      {{"read a file", openFile<O_RDONLY>},
       {"make memory that can be executed", [](const char*) { return mapMemory(PROT_READ | PROT_EXEC); }},
       {"do what nobody thought of", [](const char*) { return syscall(SYS_timerfd_create, CLOCK_MONOTONIC, 0); }}});
  expectPossible(
      Sandbox::relay,
      {{"make a local socket", makeSocket<AF_UNIX, SOCK_STREAM>},
       {"get memory", [](const char*) { return mapMemory(PROT_READ | PROT_WRITE); }},
       {"look whether a file exists", [](const char* file) { return static_cast<long>(access(file, F_OK)); }},
       {"watch a folder",
        [](const char*) { return static_cast<long>(inotify_add_watch(inotify_init1(0), "/", IN_CREATE)); }}});
}

TEST(SandboxTest, AProgramThatFailsStillEndsAsSuch) {
  const Attempt failure{"fail", [](const char*) -> long { std::abort(); }};
  for (const Sandbox sandbox : {Sandbox::localListener, Sandbox::listener, Sandbox::relay}) {
    const Outcome outcome = outcomeOf(sandbox, failure);
    EXPECT_TRUE(outcome.kind == Outcome::Kind::endedBySignal && outcome.number == SIGABRT) << outcome;
  }
}

// io_uring would do for a program what the program's own calls may not.
TEST(SandboxTest, CallsThatAreNewerThanTheListDoNotExist) {
  for (const Sandbox sandbox : {Sandbox::localListener, Sandbox::listener, Sandbox::relay}) {
    for (const Attempt& attempt : std::vector<Attempt>{
             {"set up a ring", [](const char*) { return syscall(425, 1, nullptr); }},
             {"change a file's mode in the newest way",
              [](const char* file) { return syscall(452, AT_FDCWD, file, 0777, 0); }},
             {"call what nobody knows", [](const char*) { return syscall(1000); }},
         }) {
      const Outcome outcome = outcomeOf(sandbox, attempt);
      EXPECT_TRUE(outcome.kind == Outcome::Kind::refused && outcome.number == ENOSYS)
          << attempt.what << ": " << outcome;
    }
  }
}

}  // namespace
}  // namespace tollvane
