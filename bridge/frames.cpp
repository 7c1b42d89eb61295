#include "bridge/frames.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tollvane::bridge {
namespace {

std::string_view take(std::string_view& bytes, std::size_t most) {
  const auto taken = bytes.substr(0, most);
  bytes.remove_prefix(taken.size());
  return taken;
}

}  // namespace

std::string frame(std::string_view body) {
  const auto length = static_cast<std::uint32_t>(body.size());
  std::string result(sizeof length + body.size(), '\0');
  std::memcpy(result.data(), &length, sizeof length);
  std::copy(body.begin(), body.end(), result.begin() + sizeof length);
  return result;
}

std::optional<std::string> FrameReader::next(std::string_view& bytes) {
  while (readHeader(bytes)) {
    const auto piece = take(bytes, missing_);
    missing_ -= piece.size();
    if (!passingOver_) body_ += piece;
    if (missing_ > 0) return std::nullopt;
    headerSize_ = 0;
    if (!passingOver_) return std::exchange(body_, {});
  }
  return std::nullopt;
}

// Returns whether the current frame's length is known.
bool FrameReader::readHeader(std::string_view& bytes) {
  if (headerSize_ == header_.size()) return true;
  const auto piece = take(bytes, header_.size() - headerSize_);
  std::copy(piece.begin(), piece.end(), header_.begin() + headerSize_);
  headerSize_ += piece.size();
  if (headerSize_ < header_.size()) return false;
  std::uint32_t length = 0;
  std::memcpy(&length, header_.data(), sizeof length);
  missing_ = length;
  passingOver_ = length > longest_;
  // Reserving costs no memory before the bytes come, and saves copying when they do.
  if (!passingOver_) body_.reserve(length);
  return true;
}

}  // namespace tollvane::bridge
