// Whole lines on their way to a reader who may be slow. Never blocks: what the reader does not take yet waits here, up
// to a limit; beyond it the oldest lines are dropped, whole. One thread. The descriptor belongs to the caller, who also
// decides when to call flush() again (when the descriptor can be written).
//
// The descriptor's O_NONBLOCK is never set: standard output is often shared with the process that started this one.
// Instead no more is written than the reader's pipe is known to have room for.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

namespace tollvane::soundlog {

class OutputQueue {
 public:
  static constexpr std::size_t kLimit = 256 * 1024;

  explicit OutputQueue(int descriptor, std::size_t limit = kLimit);

  // Adds a line, which ends with a line feed, and writes as much as can be written at once.
  void push(std::string line);

  void flush();

  // Something waits for the reader.
  bool pending() const { return !lines_.empty(); }

  // The reader is gone for good; nothing is kept any more.
  bool broken() const { return broken_; }

  std::size_t size() const { return bytes_; }

 private:
  enum class Room { none, some, gone };
  Room room() const;
  bool writeSome();

  int descriptor_;
  std::size_t limit_;
  bool socket_;
  std::deque<std::string> lines_;
  std::size_t bytes_ = 0;  // in lines_
  std::size_t begun_ = 0;  // bytes of the first line that the reader has already
  bool broken_ = false;
};

}  // namespace tollvane::soundlog
