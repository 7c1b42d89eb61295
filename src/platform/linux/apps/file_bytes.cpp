#include "platform/linux/apps/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "support/unique_fd.h"

namespace tollvane {

namespace {

UniqueFd openForReading(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

bool isPlain(const struct stat& status) { return S_ISREG(status.st_mode); }

// False when reading failed. May read a buffer more than `limit`.
bool readUpTo(int fd, std::size_t limit, std::string& bytes, bool shortIsEnd) {
  char buffer[8192];
  while (bytes.size() <= limit) {
    const ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return true;
    bytes.append(buffer, static_cast<std::size_t>(count));
    if (shortIsEnd && static_cast<std::size_t>(count) < sizeof buffer / 2) return true;
  }
  return true;
}

}  // namespace

std::optional<std::string> readPlainFile(const std::string& path, std::size_t limit) {
  struct stat status {};
  // Asked before opening, too: opening alone can have an effect on a device.
  if (::stat(path.c_str(), &status) != 0 || !isPlain(status)) return std::nullopt;
  const UniqueFd file = openForReading(path);
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !isPlain(status)) return std::nullopt;
  if (static_cast<std::size_t>(status.st_size) > limit) return std::nullopt;
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(status.st_size));
  if (!readUpTo(file.get(), limit, bytes, false) || bytes.size() > limit) return std::nullopt;
  return bytes;
}

std::optional<std::string> readKernelFile(const std::string& path, std::size_t limit) {
  const UniqueFd file = openForReading(path);
  if (file.get() < 0) return std::nullopt;
  std::string bytes;
  // The kernel ends a piece early only where the next line does not fit: what is less than half full was all.
  if (!readUpTo(file.get(), limit, bytes, true)) return std::nullopt;
  if (bytes.size() > limit) bytes.resize(limit);
  return bytes;
}

std::optional<std::string> realPath(const std::string& path) {
  char buffer[PATH_MAX];
  if (::realpath(path.c_str(), buffer) == nullptr) return std::nullopt;
  return std::string(buffer);
}

}  // namespace tollvane
