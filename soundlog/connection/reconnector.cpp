#include "soundlog/connection/reconnector.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tollvane::soundlog {

Duration RetryPlan::appeared() {
  failures_ = 0;
  return settle;
}

std::optional<Duration> RetryPlan::failed() {
  if (failures_ >= mostFailures) return std::nullopt;
  ++failures_;
  return settle * (1 << (2 * failures_));  // 80, 320, 1280, 5120 ms
}

std::optional<Duration> RetryPlan::lost(Instant now) {
  failures_ = 0;
  if (now - connectedAt_ >= shortLife) {
    shortLives_ = 0;
    return settle;
  }
  if (shortLives_ >= mostShortLives) {
    shortLives_ = 0;
    failures_ = mostFailures;
    return std::nullopt;
  }
  ++shortLives_;
  return std::min<Duration>(shortLife * (1 << (shortLives_ - 1)), longestPause);
}

SocketWatch::SocketWatch(std::filesystem::path socket, std::function<void()> appeared)
    : file_(std::move(socket)), appeared_(std::move(appeared)) {
  if (file_.descriptor() < 0) return;
  watch_ = watchDescriptor(file_.descriptor(), G_IO_IN, [this](GIOCondition) {
    if (file_.appeared()) appeared_();
  });
}

Reconnector::Reconnector(std::optional<std::filesystem::path> socket, std::function<bool()> connect)
    : socket_(std::move(socket)), connect_(std::move(connect)) {}

void Reconnector::start() {
  watchSocket();
  // If the socket exists already, the server may be about to listen, and the socket will not appear again.
  std::error_code ignored;
  if (socket_ && std::filesystem::exists(*socket_, ignored)) plan_.appeared();
  attempt();
}

void Reconnector::stop() {
  timer_.reset();
  watch_.reset();
}

void Reconnector::served() {
  plan_.connected(std::chrono::steady_clock::now());
  watch_.reset();
}

bool Reconnector::ended(bool served) {
  // Watch first, then try: a server that comes back in between is not missed.
  watchSocket();
  return tryAgain(served ? plan_.lost(std::chrono::steady_clock::now()) : plan_.failed());
}

void Reconnector::watchSocket() {
  if (watch_ || !socket_) return;
  watch_ = std::make_unique<SocketWatch>(*socket_, [this] { tryAgain(plan_.appeared()); });
}

bool Reconnector::tryAgain(std::optional<Duration> delay) {
  timer_.reset();
  if (delay) timer_ = callAfter(*delay, [this] { attempt(); });
  return delay.has_value();
}

void Reconnector::attempt() {
  if (!connect_()) tryAgain(plan_.failed());
}

}  // namespace tollvane::soundlog
