#include "platform/posix/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane {
namespace {

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

using Piece = std::array<char, 65536>;

bool copyBytes(int source, int target) {
  Piece bytes;
  while (true) {
    const auto size = readFully(source, bytes.data(), bytes.size());
    if (!size) return false;
    if (*size == 0) return true;
    if (!writeAll(target, {bytes.data(), *size})) return false;
  }
}

void syncDirectory(const std::filesystem::path& directory) {
  const UniqueFd fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.get());
}

UniqueFd openForReading(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

}  // namespace

bool PosixFiles::exists(const std::filesystem::path& path) const {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool PosixFiles::createDirectories(const std::filesystem::path& directory) {
  struct stat status {};
  if (::stat(directory.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) return true;
    errno = ENOTDIR;
    return false;
  }
  const auto parent = directory.parent_path();
  if (parent != directory && !parent.empty() && !createDirectories(parent)) return false;
  return ::mkdir(directory.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

Files::Append PosixFiles::append(const std::filesystem::path& file, std::string_view bytes) {
  // O_NONBLOCK: a pipe that nobody reads is an error here, not a wait without end.
  const UniqueFd fd(::open(file.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!fd) return Append::notOpened;
  struct stat before {};
  if (::fstat(fd.get(), &before) != 0) return Append::notWritten;
  if (writeAll(fd.get(), bytes)) return Append::done;
  // Half a line would swallow the next one. If it cannot be taken back, there is nothing more to be done.
  [[maybe_unused]] const bool takenBack = S_ISREG(before.st_mode) && ::ftruncate(fd.get(), before.st_size) == 0;
  return Append::notWritten;
}

bool PosixFiles::writeAtomically(const std::filesystem::path& file, std::string_view bytes) {
  std::error_code error;
  std::filesystem::path target = std::filesystem::canonical(file, error);
  if (error) target = file;
  std::string temporary = target.string() + ".XXXXXX";
  const UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));  // mode 0600
  if (!fd) return false;
  const bool written = writeAll(fd.get(), bytes) && ::fsync(fd.get()) == 0;
  if (!written || std::rename(temporary.c_str(), target.c_str()) != 0) {
    const int reason = errno;
    ::unlink(temporary.c_str());
    errno = reason;
    return false;
  }
  syncDirectory(target.parent_path());
  return true;
}

bool PosixFiles::write(const std::filesystem::path& file, std::string_view bytes) {
  // Not cut before it is known to be a plain file.
  const UniqueFd fd(::open(file.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, S_IRUSR | S_IWUSR));
  struct stat status {};
  if (!fd || ::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  return ::ftruncate(fd.get(), 0) == 0 && writeAll(fd.get(), bytes);
}

std::optional<std::string> PosixFiles::read(const std::filesystem::path& file, std::size_t most) const {
  return readPlainFile(file, most);
}

std::optional<std::vector<std::string>> PosixFiles::list(const std::filesystem::path& directory) const {
  std::error_code error;
  std::vector<std::string> names;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error))
    names.push_back(entry->path().filename().string());
  return error ? std::nullopt : std::optional(std::move(names));
}

bool PosixFiles::canBeStarted(const std::filesystem::path& program) const {
  struct stat status {};
  return ::stat(program.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(program.c_str(), X_OK) == 0;
}

bool PosixFiles::contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const {
  const UniqueFd left = openPlainFile(a);
  const UniqueFd right = openPlainFile(b);
  if (!left || !right) return false;
  Piece leftBytes;
  Piece rightBytes;
  while (true) {
    const auto leftSize = readFully(left.get(), leftBytes.data(), leftBytes.size());
    const auto rightSize = readFully(right.get(), rightBytes.data(), rightBytes.size());
    if (!leftSize || leftSize != rightSize) return false;
    if (*leftSize == 0) return true;
    if (!std::equal(leftBytes.begin(), leftBytes.begin() + *leftSize, rightBytes.begin())) return false;
  }
}

bool PosixFiles::copy(const std::filesystem::path& from, const std::filesystem::path& to) {
  const UniqueFd source = openPlainFile(from);
  struct stat status {};
  if (!source || ::fstat(source.get(), &status) != 0) return false;
  const UniqueFd target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!target) return false;
  if (copyBytes(source.get(), target.get()) && ::fchmod(target.get(), status.st_mode & 07777) == 0) return true;
  ::unlink(to.c_str());
  return false;
}

bool PosixFiles::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

bool PosixFiles::remove(const std::filesystem::path& path) { return ::remove(path.c_str()) == 0; }

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
