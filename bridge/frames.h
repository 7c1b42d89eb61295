// The framing of native messaging: a 32-bit length in the machine's byte order, then that many bytes. Pure; one thread.
// Source: the native messaging pages of Chrome's and Firefox's extension documentation.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane::bridge {

// The most that a browser takes in one frame: one byte more, and it disconnects.
inline constexpr std::size_t longestToBrowser = 1024 * 1024;

// The most that is taken from a browser; Chromium sends no more either.
inline constexpr std::size_t longestFromBrowser = 64 * 1024 * 1024;

// `body` is at most longestToBrowser long.
std::string frame(std::string_view body);

// Bytes in, bodies of frames out, however the bytes are cut. A frame that is longer than `longest` is passed over
// without being kept; what follows it is read as usual.
class FrameReader {
 public:
  explicit FrameReader(std::size_t longest) : longest_(longest) {}

  // Takes bytes from the front until a frame is whole: its body, which may be empty. Absent when all bytes are taken.
  std::optional<std::string> next(std::string_view& bytes);

 private:
  bool readHeader(std::string_view& bytes);

  std::size_t longest_;
  std::array<char, sizeof(std::uint32_t)> header_{};
  std::size_t headerSize_ = 0;
  std::size_t missing_ = 0;  // of the current body
  bool passingOver_ = false;
  std::string body_;
};

}  // namespace tollvane::bridge
