#include "platform/linux/system/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "support/unique_fd.h"

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

void syncDirectory(const std::filesystem::path& directory) {
  const UniqueFd fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.get());
}

}  // namespace

bool PosixFiles::exists(const std::filesystem::path& path) const {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool PosixFiles::createDirectories(const std::filesystem::path& directory) {
  struct stat status {};
  if (::stat(directory.c_str(), &status) == 0) return S_ISDIR(status.st_mode);
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
  // Half a line would swallow the next one. If even this fails, there is nothing more to be done.
  if (S_ISREG(before.st_mode) && ::ftruncate(fd.get(), before.st_size) != 0) return Append::notWritten;
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
    ::unlink(temporary.c_str());
    return false;
  }
  syncDirectory(target.parent_path());
  return true;
}

}  // namespace tollvane
