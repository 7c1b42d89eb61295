#include "bridge/relay.h"

#include <algorithm>
#include <utility>

#include "bridge/message_kind.h"

namespace tollvane::bridge {

Relay::Relay(std::string introduction, std::string browser)
    : introduction_(std::move(introduction)),
      browser_(std::move(browser)),
      frames_(longestFromBrowser),
      lines_(longestToBrowser) {}

void Relay::fromBrowser(std::string_view bytes) {
  while (auto message = frames_.next(bytes)) passOn(std::move(*message));
}

void Relay::passOn(std::string message) {
  if (!connected_ && message.size() > longestHello) return;  // it can be neither sent nor remembered
  const MessageKind kind = kindOf(message);
  if (kind == MessageKind::malformed) return;
  // In JSON a line feed can only stand between two tokens, where a blank means the same.
  std::replace(message.begin(), message.end(), '\n', ' ');
  if (kind == MessageKind::hello && message.size() <= longestHello) hello_ = message;
  if (!connected_) return;
  message += '\n';
  toApplication.push(std::move(message));
}

void Relay::fromApplication(std::string_view bytes) {
  lines_.append(bytes);
  while (const auto line = lines_.next()) {
    if (line->size() > longestToBrowser || kindOf(*line) == MessageKind::malformed) continue;
    answered_ = true;
    toBrowser.push(frame(*line));
  }
}

void Relay::connected() {
  connected_ = true;
  toApplication.push(introduction_ + '\n');
  if (!hello_.empty()) toApplication.push(hello_ + '\n');
}

void Relay::disconnected() {
  connected_ = answered_ = false;
  toApplication.clear();
  lines_ = LineBuffer(longestToBrowser);
}

void Relay::announce() {
  if (announced_ == connected_) return;
  announced_ = connected_;
  const std::string browser = browser_.empty() ? "" : R"(,"browser":")" + browser_ + "\"";
  toBrowser.push(frame(R"({"type":"link","open":)" + std::string(connected_ ? "true" : "false") + browser + "}"));
}

}  // namespace tollvane::bridge
