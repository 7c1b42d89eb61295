// Runs when Tollvane is built: writes the filters of sandbox.cpp as C++ into a file. libseccomp knows the calls of each
// processor; the programs need neither its memory nor its time.
//
// TollvaneLog uses large libraries, which call what they like, so it is forbidden what it must never do. TollvaneBridge
// calls little, so everything else is forbidden.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

// A call that this program's list cannot know yet does not exist for the sandboxed program: the C library takes that
// for an older kernel. The numbers of calls since Linux 5 are the same on all processors; this is the first after 6.5.
constexpr unsigned firstUnknownCall = 452;

constexpr int notPermitted = EPERM;
constexpr int notKnown = ENOSYS;
// libpulse opens its cookie for writing, and only after this error for reading.
constexpr int notWritable = EACCES;
// libpulse makes the folder of its socket, and goes on only if it was made or, as always here, is there.
constexpr int alreadyThere = EEXIST;

[[noreturn]] void fail(const std::string& sentence) {
  std::fprintf(stderr, "make_filters: %s\n", sentence.c_str());
  std::exit(EXIT_FAILURE);
}

class Filter {
 public:
  using Names = std::initializer_list<const char*>;
  using Conditions = std::vector<scmp_arg_cmp>;

  explicit Filter(std::uint32_t otherwise) : filter_(seccomp_init(otherwise)) {
    if (!filter_) fail("libseccomp does not start");
    // Calls in the way of another processor, such as 32-bit calls on x86-64.
    must(seccomp_attr_set(filter_, SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(notKnown)), "other processors");
    must(seccomp_attr_set(filter_, SCMP_FLTATR_CTL_OPTIMIZE, 2), "the order of the instructions");
  }
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;
  ~Filter() { seccomp_release(filter_); }

  // Names of calls that this processor or this libseccomp does not have are skipped.
  void forbid(Names names, int error, const Conditions& conditions = {}) {
    add(SCMP_ACT_ERRNO(static_cast<std::uint32_t>(error)), names, conditions);
  }
  void allow(Names names, const Conditions& conditions = {}) { add(SCMP_ACT_ALLOW, names, conditions); }

  void print(const char* name) const {
    std::FILE* const file = std::tmpfile();
    if (!file) fail("there is no room for a temporary file");
    must(seccomp_export_bpf(filter_, fileno(file)), name);
    std::rewind(file);
    std::printf("constexpr sock_filter %s[] = {\n", name);
    const sock_filter unknown[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, firstUnknownCall, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | notKnown),
    };
    for (const sock_filter& instruction : unknown) print(instruction);
    sock_filter instruction{};
    while (std::fread(&instruction, sizeof instruction, 1, file) == 1) print(instruction);
    std::printf("};\n");
    std::fclose(file);
  }

 private:
  static void must(int result, const std::string& what) {
    if (result < 0) fail(what + ": error " + std::to_string(-result));
  }

  static void print(const sock_filter& instruction) {
    std::printf("{%u, %u, %u, %u},\n", instruction.code, instruction.jt, instruction.jf, instruction.k);
  }

  void add(std::uint32_t action, Names names, const Conditions& conditions) {
    for (const char* name : names) {
      const int call = seccomp_syscall_resolve_name(name);
      if (call == __NR_SCMP_ERROR) continue;
      must(seccomp_rule_add_array(filter_, action, call, static_cast<unsigned>(conditions.size()), conditions.data()),
           name);
    }
  }

  scmp_filter_ctx filter_;
};

// Argument number `index`, all of its bits or those of `mask`, is `value`.
scmp_arg_cmp is(unsigned index, scmp_datum_t value) { return {index, SCMP_CMP_EQ, value, 0}; }
scmp_arg_cmp isNot(unsigned index, scmp_datum_t value) { return {index, SCMP_CMP_NE, value, 0}; }
scmp_arg_cmp masked(unsigned index, scmp_datum_t mask, scmp_datum_t value) {
  return {index, SCMP_CMP_MASKED_EQ, mask, value};
}

// On 32-bit x86, socketcall() makes sockets too, and a filter does not see its arguments.
bool seesFamilies() { return seccomp_arch_native() != SCMP_ARCH_X86; }

void listener() {
  Filter filter(SCMP_ACT_ALLOW);
  // Programs. Threads are allowed; the C library makes them with clone() if there is no clone3(), whose flags a filter
  // cannot see.
  filter.forbid({"execve", "execveat", "fork", "vfork", "unshare", "setns"}, notPermitted);
  filter.forbid({"clone"}, notPermitted, {masked(0, CLONE_THREAD, 0)});
  filter.forbid({"clone3"}, notKnown);

  // Other processes. tgkill() stays for abort() and for the signals of 32 and more, which the C library sends to
  // threads.
  filter.forbid({"ptrace", "process_vm_readv", "process_vm_writev", "process_madvise", "process_mrelease",
                 "pidfd_getfd", "kcmp", "kill", "tkill", "rt_sigqueueinfo", "rt_tgsigqueueinfo", "pidfd_send_signal"},
                notPermitted);
  for (scmp_datum_t signal = 1; signal < 32; ++signal)
    if (signal != SIGABRT) filter.forbid({"tgkill"}, notPermitted, {is(2, signal)});

  // Files.
  for (const int way : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC}) {
    const auto bits = static_cast<scmp_datum_t>(way);
    filter.forbid({"open"}, notWritable, {masked(1, bits, bits)});
    filter.forbid({"openat"}, notWritable, {masked(2, bits, bits)});
  }
  filter.forbid({"openat2"}, notKnown);
  filter.forbid({"mkdir", "mkdirat"}, alreadyThere);
  filter.forbid({"creat", "unlink", "unlinkat", "rename", "renameat", "renameat2", "rmdir", "link", "linkat", "symlink",
                 "symlinkat", "mknod", "mknodat", "truncate", "truncate64"},
                notWritable);
  filter.forbid({"chmod",
                 "fchmod",
                 "fchmodat",
                 "chown",
                 "chown32",
                 "fchown",
                 "fchown32",
                 "lchown",
                 "lchown32",
                 "fchownat",
                 "utime",
                 "utimes",
                 "futimesat",
                 "utimensat",
                 "utimensat_time64",
                 "setxattr",
                 "lsetxattr",
                 "fsetxattr",
                 "removexattr",
                 "lremovexattr",
                 "fremovexattr",
                 "name_to_handle_at",
                 "open_by_handle_at"},
                notPermitted);

  // Sockets of its own.
  filter.forbid({"listen", "accept", "accept4"}, notPermitted);

  // The terminal it was started in: a program could type into it.
  filter.forbid({"ioctl"}, notPermitted, {masked(1, 0xffffffff, TIOCSTI)});
  filter.forbid({"ioctl"}, notPermitted, {masked(1, 0xffffffff, TIOCLINUX)});

  // The system, and parts of the kernel that break more often than others.
  filter.forbid({"io_uring_setup", "io_uring_enter", "io_uring_register"}, notKnown);
  filter.forbid({"bpf",           "perf_event_open", "userfaultfd",     "fanotify_init", "add_key",
                 "request_key",   "keyctl",          "modify_ldt",      "personality",   "mount",
                 "umount",        "umount2",         "open_tree",       "move_mount",    "fsopen",
                 "fsconfig",      "fsmount",         "fspick",          "mount_setattr", "chroot",
                 "pivot_root",    "swapon",          "swapoff",         "init_module",   "finit_module",
                 "delete_module", "kexec_load",      "kexec_file_load", "reboot",        "acct",
                 "quotactl",      "quotactl_fd",     "settimeofday",    "clock_settime", "clock_settime64",
                 "adjtimex",      "clock_adjtime",   "clock_adjtime64", "sethostname",   "setdomainname",
                 "iopl",          "ioperm",          "syslog"},
                notPermitted);
  filter.print("listenerFilter");
}

void local() {
  Filter filter(SCMP_ACT_ALLOW);
  if (seesFamilies()) filter.forbid({"socket", "socketpair"}, notPermitted, {isNot(0, AF_UNIX)});
  filter.print("localFilter");
}

void relay() {
  // What nobody thought of does not exist, so that the C library does it in an older way.
  Filter filter(SCMP_ACT_ERRNO(notKnown));
  filter.allow({"read",  "readv",    "write",      "writev",     "close",       "poll",       "ppoll",   "ppoll_time64",
                "recv",  "recvfrom", "recvmsg",    "send",       "sendto",      "sendmsg",    "connect", "shutdown",
                "fcntl", "fcntl64",  "getsockopt", "setsockopt", "getsockname", "getpeername"});
  if (seesFamilies()) {
    filter.allow({"socket"}, {is(0, AF_UNIX)});
  } else {
    filter.allow({"socket"});
  }
  filter.allow({"inotify_init1", "inotify_add_watch", "inotify_rm_watch", "stat", "stat64", "lstat", "lstat64",
                "newfstatat", "fstatat64", "statx", "access", "faccessat", "faccessat2"});
  filter.allow({"mmap", "mmap2", "mprotect"}, {masked(2, PROT_EXEC, 0)});
  filter.allow({"brk", "munmap", "mremap", "madvise", "futex", "futex_time64", "sched_yield", "getrandom"});
  filter.allow({"clock_gettime", "clock_gettime64", "clock_getres", "gettimeofday", "time", "restart_syscall"});
  filter.allow({"getpid", "getppid", "gettid", "getuid", "getuid32", "geteuid", "geteuid32"});
  filter.allow({"rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigreturn", "sigaltstack", "exit", "exit_group"});
  filter.allow({"tgkill"}, {is(2, SIGABRT)});  // for abort()

  // Said more plainly than by "does not exist", because it is what an intruder would try.
  filter.forbid(
      {"execve", "execveat", "fork",   "vfork",    "clone",     "ptrace", "process_vm_readv", "process_vm_writev",
       "kill",   "bind",     "listen", "accept",   "accept4",   "open",   "openat",           "creat",
       "unlink", "unlinkat", "rename", "renameat", "renameat2", "mkdir",  "mkdirat"},
      notPermitted);
  if (seesFamilies()) filter.forbid({"socket"}, notPermitted, {isNot(0, AF_UNIX)});
  filter.print("relayFilter");
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2 || !std::freopen(arguments[1], "w", stdout)) fail("the only argument is the file to write");
  std::printf("#pragma once\n#include <linux/filter.h>\nnamespace tollvane {\nnamespace {\n");
  listener();
  local();
  relay();
  std::printf("}  // namespace\n}  // namespace tollvane\n");
  return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
