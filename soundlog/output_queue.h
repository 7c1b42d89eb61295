// Lines on their way to a reader that may be slow. Never blocks: lines that the reader does not take yet wait here, up
// to a limit; beyond it the oldest lines are dropped as a whole. The text of a line is made only when it is written,
// and a pipe is made so small that it accepts the next line only after the reader has taken the last one: so what a
// line says about processes is true when the reader gets it, however long it waited. One thread. The descriptor belongs
// to the caller, who calls flush() again when it can be written.
//
// The descriptor's O_NONBLOCK is never set: standard output is often shared with the process that started this one.
// Instead, no more is written than the reader's pipe is known to have room for.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

namespace tollvane::soundlog {

class OutputQueue {
 public:
  static constexpr std::size_t mostLines = 512;

  // Makes the text of a line, with its line feed.
  using Line = std::function<std::string()>;

  explicit OutputQueue(int descriptor, std::size_t limit = mostLines);

  // Adds a line and writes as much as can be written at once.
  void push(Line line);

  void flush();

  // Whether anything waits for the reader.
  bool pending() const { return !lines_.empty() || !begun_.empty(); }

  // Whether the reader is gone for good. From then on every line is dropped.
  bool broken() const { return broken_; }

  // The number of lines of which nothing has been written yet.
  std::size_t size() const { return lines_.size(); }

 private:
  enum class Room { none, some, gone };
  Room room() const;
  bool writeSome();

  int descriptor_;
  std::size_t limit_;
  bool socket_;
  std::deque<Line> lines_;
  std::string begun_;  // the rest of a line of which the reader has the beginning
  bool broken_ = false;
};

}  // namespace tollvane::soundlog
