#include "platform/posix/plain_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>

namespace tollvane {
namespace {

UniqueFd openForReading(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

}  // namespace

UniqueFd openPlainFile(const std::string& path) {
  struct stat status {};
  // Asked before opening, too: opening alone can have an effect on a device.
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return UniqueFd();
  UniqueFd file = openForReading(path);
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return UniqueFd();
  return file;
}

std::optional<std::size_t> readFully(int descriptor, char* buffer, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = ::read(descriptor, buffer + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::optional<std::string> readPlainFile(const std::string& path, std::size_t most) {
  const UniqueFd file = openPlainFile(path);
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) return std::nullopt;
  if (static_cast<std::uintmax_t>(status.st_size) > most) return std::nullopt;
  // One byte more than there should be: a file that grows while it is read is read whole, or not at all.
  std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
  std::size_t filled = 0;
  while (true) {
    const auto got = readFully(file.get(), bytes.data() + filled, bytes.size() - filled);
    if (!got) return std::nullopt;
    filled += *got;
    if (filled > most) return std::nullopt;
    if (filled < bytes.size()) break;
    bytes.resize(std::min(2 * bytes.size(), most + 1));
  }
  bytes.resize(filled);
  return bytes;
}

std::optional<std::string> readKernelFile(const std::string& path, std::size_t most) {
  const UniqueFd file = openForReading(path);
  if (!file) return std::nullopt;
  std::string bytes;
  std::array<char, 8192> piece;
  while (bytes.size() <= most) {
    const ssize_t size = ::read(file.get(), piece.data(), piece.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return std::nullopt;
    bytes.append(piece.data(), static_cast<std::size_t>(size));
    // The kernel ends a piece early only where the next line does not fit: a piece that is less than half full was the
    // last one.
    if (static_cast<std::size_t>(size) < piece.size() / 2) break;
  }
  bytes.resize(std::min(bytes.size(), most));
  return bytes;
}

std::optional<std::string> realPath(const std::string& path) {
  std::array<char, PATH_MAX> buffer;
  if (::realpath(path.c_str(), buffer.data()) == nullptr) return std::nullopt;
  return std::string(buffer.data());
}

}  // namespace tollvane
