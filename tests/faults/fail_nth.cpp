// A library to be preloaded (LD_PRELOAD) that lets one call of the system fail: the nth since the test asked for it. A
// test finds its two functions with dlsym. All other calls go to the system as they are. One thread.

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const char* failing = "";
int failsAt = 0;
int seen = 0;

// Whether this call is the one that fails. Calls that are like it count together: open, openat and mkostemp.
bool fails(const char* call, int reason) {
  if (std::strcmp(failing, call) != 0 || ++seen != failsAt) return false;
  errno = reason;
  return true;
}

template <class Function>
Function real(Function, const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list& arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

// From now on the nth call named `call` fails. An empty name ends that.
void failNth(const char* call, int n) {
  failing = call;
  failsAt = n;
  seen = 0;
}

// How many calls of that name were made since.
int callsSeen() { return seen; }

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return fails("open", EMFILE) ? -1 : real(&open, "open")(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return fails("open", EMFILE) ? -1 : real(&open64, "open64")(path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return fails("open", EMFILE) ? -1 : real(&openat, "openat")(directory, path, flags, mode);
}

int mkostemp(char* name, int flags) { return fails("open", EMFILE) ? -1 : real(&mkostemp, "mkostemp")(name, flags); }

// "write": nothing is written. "half write": a half is, and for the rest there is no room.
ssize_t write(int descriptor, const void* bytes, size_t size) {
  const auto call = real(&write, "write");
  if (fails("write", ENOSPC)) return -1;
  if (std::strcmp(failing, "half write") != 0) return call(descriptor, bytes, size);
  ++seen;
  if (seen == failsAt && size > 1) return call(descriptor, bytes, size / 2);
  if (seen != failsAt + 1) return call(descriptor, bytes, size);
  errno = ENOSPC;
  return -1;
}

int rename(const char* from, const char* to) { return fails("rename", EIO) ? -1 : real(&rename, "rename")(from, to); }
int fsync(int descriptor) { return fails("fsync", EIO) ? -1 : real(&fsync, "fsync")(descriptor); }
int ftruncate(int descriptor, off_t size) noexcept {
  return fails("ftruncate", EIO) ? -1 : real(&ftruncate, "ftruncate")(descriptor, size);
}
int unlink(const char* path) noexcept { return fails("unlink", EIO) ? -1 : real(&unlink, "unlink")(path); }
int mkdir(const char* path, mode_t mode) noexcept {
  return fails("mkdir", ENOSPC) ? -1 : real(&mkdir, "mkdir")(path, mode);
}
int chmod(const char* path, mode_t mode) noexcept {
  return fails("chmod", EIO) ? -1 : real(&chmod, "chmod")(path, mode);
}

int socket(int domain, int type, int protocol) noexcept {
  return fails("socket", EMFILE) ? -1 : real(&socket, "socket")(domain, type, protocol);
}
int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept {
  return fails("bind", ENOSPC) ? -1 : real(&bind, "bind")(descriptor, address, size);
}
int listen(int descriptor, int backlog) noexcept {
  return fails("listen", EIO) ? -1 : real(&listen, "listen")(descriptor, backlog);
}
int accept(int descriptor, sockaddr* address, socklen_t* size) {
  return fails("accept", EMFILE) ? -1 : real(&accept, "accept")(descriptor, address, size);
}
int connect(int descriptor, const sockaddr* address, socklen_t size) {
  return fails("connect", ECONNREFUSED) ? -1 : real(&connect, "connect")(descriptor, address, size);
}

int inotify_init1(int flags) noexcept {
  return fails("inotify_init", EMFILE) ? -1 : real(&inotify_init1, "inotify_init1")(flags);
}
int inotify_add_watch(int descriptor, const char* path, uint32_t mask) noexcept {
  return fails("inotify_add_watch", ENOSPC) ? -1
                                            : real(&inotify_add_watch, "inotify_add_watch")(descriptor, path, mask);
}

// What the toolkit starts programs with, where the kernel has it.
int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
  va_list arguments;
  va_start(arguments, argument);
  void* const parentThread = va_arg(arguments, void*);
  void* const storage = va_arg(arguments, void*);
  void* const childThread = va_arg(arguments, void*);
  va_end(arguments);
  if (fails("fork", EAGAIN)) return -1;
  return real(&clone, "clone")(function, stack, flags, argument, parentThread, storage, childThread);
}

pid_t fork() noexcept { return fails("fork", EAGAIN) ? -1 : real(&fork, "fork")(); }
int pipe2(int* ends, int flags) noexcept { return fails("pipe", EMFILE) ? -1 : real(&pipe2, "pipe2")(ends, flags); }
int execve(const char* program, char* const* arguments, char* const* variables) noexcept {
  return fails("exec", ENOMEM) ? -1 : real(&execve, "execve")(program, arguments, variables);
}
int execv(const char* program, char* const* arguments) noexcept {
  return fails("exec", ENOMEM) ? -1 : real(&execv, "execv")(program, arguments);
}

}  // extern "C"
