// Whole lines on their way to a reader who may be slow. Never blocks: what the reader does not take yet waits here, up
// to a limit; beyond it the oldest lines are dropped, whole. A line is worded only when it is written, and a pipe is
// made so small that it takes the next line only when the reader has taken the last: what a line says of processes is
// true when it is handed over, however long it waited. One thread. The descriptor belongs to the caller, who also
// decides when to call flush() again (when the descriptor can be written).
//
// The descriptor's O_NONBLOCK is never set: standard output is often shared with the process that started this one.
// Instead no more is written than the reader's pipe is known to have room for.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

namespace tollvane::soundlog {

class OutputQueue {
 public:
  static constexpr std::size_t mostLines = 512;

  // Words a line, which ends with a line feed.
  using Line = std::function<std::string()>;

  explicit OutputQueue(int descriptor, std::size_t limit = mostLines);

  // Adds a line, and writes as much as can be written at once.
  void push(Line line);

  void flush();

  // Something waits for the reader.
  bool pending() const { return !lines_.empty() || !begun_.empty(); }

  // The reader is gone for good; nothing is kept any more.
  bool broken() const { return broken_; }

  // Lines that the reader has nothing of yet.
  std::size_t size() const { return lines_.size(); }

 private:
  enum class Room { none, some, gone };
  Room room() const;
  bool writeSome();

  int descriptor_;
  std::size_t limit_;
  bool socket_;
  std::deque<Line> lines_;
  std::string begun_;  // what the reader has still to get of a line that it has the beginning of
  bool broken_ = false;
};

}  // namespace tollvane::soundlog
