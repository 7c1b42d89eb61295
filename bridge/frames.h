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

// The most bytes that a browser accepts in one frame; it disconnects if a frame is longer.
inline constexpr std::size_t longestToBrowser = 1024 * 1024;

// The most bytes that we accept in one frame from a browser. Chromium sends no longer frames.
inline constexpr std::size_t longestFromBrowser = 64 * 1024 * 1024;

// `body` must be at most longestToBrowser bytes long.
std::string frame(std::string_view body);

// Takes a stream of bytes, cut into pieces of any size, and returns the bodies of its frames. A frame longer than
// `longest` is skipped without being stored, and the frames after it are read as usual.
class FrameReader {
 public:
  explicit FrameReader(std::size_t longest) : longest_(longest) {}

  // Removes bytes from the front of `bytes` until a frame is complete, and returns its body, which may be empty. Absent
  // if `bytes` is used up before that.
  std::optional<std::string> next(std::string_view& bytes);

 private:
  bool readHeader(std::string_view& bytes);

  std::size_t longest_;
  std::array<char, sizeof(std::uint32_t)> header_{};
  std::size_t headerSize_ = 0;
  std::size_t missing_ = 0;  // bytes of the current body that have not come yet
  bool passingOver_ = false;
  std::string body_;
};

}  // namespace tollvane::bridge
