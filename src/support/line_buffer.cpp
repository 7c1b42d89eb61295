#include "support/line_buffer.h"

#include <algorithm>

namespace tollvane {
namespace {

// An emptied buffer larger than this gives its memory back.
constexpr std::size_t largestKeptBuffer = 1 << 20;

}  // namespace

void LineBuffer::append(std::string_view bytes) {
  compact();
  if (dropping_) {
    const auto newline = bytes.find('\n');
    if (newline == std::string_view::npos) return;
    bytes.remove_prefix(newline + 1);
    dropping_ = false;
  }
  const std::size_t needed = bytes_.size() + bytes.size() + padding;
  if (needed > bytes_.capacity()) {
    // Doubled, but not beyond what the longest line takes: while the bytes move, both memories are held.
    const std::size_t doubled = 2 * bytes_.capacity();
    const std::size_t most = longestLine_ + bytes.size() + padding;
    bytes_.reserve(std::max(needed, doubled < longestLine_ ? doubled : most));
  }
  bytes_.append(bytes);
}

std::optional<std::string_view> LineBuffer::next() {
  for (auto newline = bytes_.find('\n', searched_); newline != bytes_.npos; newline = bytes_.find('\n', searched_)) {
    const std::string_view line(bytes_.data() + begin_, newline - begin_);
    begin_ = searched_ = newline + 1;
    if (line.size() <= longestLine_) return line;
  }
  searched_ = bytes_.size();
  if (bytes_.size() - begin_ > longestLine_) {
    begin_ = searched_;
    dropping_ = true;
  }
  compact();
  return std::nullopt;
}

void LineBuffer::compact() {
  if (begin_ == 0) return;
  bytes_.erase(0, begin_);
  searched_ -= begin_;
  begin_ = 0;
  if (bytes_.empty() && bytes_.capacity() > largestKeptBuffer) std::string().swap(bytes_);
}

}  // namespace tollvane
