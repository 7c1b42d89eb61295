// A file descriptor with an owner: closed when the owner ends. POSIX only. One thread.
#pragma once

#include <unistd.h>

#include <utility>

namespace tollvane {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);  // `other` closes what was here
    return *this;
  }
  ~UniqueFd() { reset(); }

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }
  void reset() {
    if (fd_ >= 0) ::close(std::exchange(fd_, -1));
  }

 private:
  int fd_ = -1;
};

}  // namespace tollvane
