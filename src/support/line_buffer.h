// Bytes in, lines out. The cost is linear in the bytes, however they are cut into reads and however many lines one
// read brings: nothing is searched twice, and what is left of a read moves to the front once.
//
//   lines.append(bytes);
//   while (auto line = lines.next()) use(*line);
//
// A line ends with a newline byte, which is not part of it; a carriage return is a byte like any other. One thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane {

class LineBuffer {
 public:
  // Behind each line there are this many more bytes that may be read (not used), for readers that load whole vectors.
  static constexpr std::size_t padding = 64;

  // A line that grows beyond `longestLine` bytes is dropped up to its newline, so that a writer who never ends a line
  // cannot fill the memory.
  explicit LineBuffer(std::size_t longestLine) : longestLine_(longestLine) {}

  void append(std::string_view bytes);

  // The next whole line; absent when none exists yet. Valid until the next call of either function.
  std::optional<std::string_view> next();

 private:
  void compact();

  std::size_t longestLine_;
  std::string bytes_;         // capacity is at least size + padding
  std::size_t begin_ = 0;     // of the first line not yet handed out
  std::size_t searched_ = 0;  // no newline between begin_ and here
  bool dropping_ = false;     // inside a line that was too long
};

}  // namespace tollvane
