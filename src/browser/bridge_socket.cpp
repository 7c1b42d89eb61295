#include "browser/bridge_socket.h"

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

constexpr std::chrono::seconds breather{1};  // the pause after the process ran out of file descriptors

constexpr std::size_t readSize = 65536;

}  // namespace

void BridgeListener::open(const std::string& path) {
  listener_ = LocalListener::at(path);
  if (listener_) watch();
}

void BridgeListener::watch() {
  watch_ = queue_.watchReadable(listener_.descriptor(), [this] { acceptConnection(); });
}

void BridgeListener::acceptConnection() {
  auto [result, stream] = listener_.accept();
  if (stream && onConnection) onConnection(std::move(stream));
  if (result != LocalListener::Accepting::exhausted) return;
  // The bridge stays in the queue, and so the socket stays readable: reading it again at once would not help.
  watch_.reset();
  queue_.after(breather, alive_.guard([this] {
    if (listener_ && !watch_) watch();
  }));
}

void BridgeListener::close() {
  watch_.reset();
  listener_.close();
}

BridgeConnection::BridgeConnection(LocalStream stream, std::chrono::milliseconds patience)
    : stream_(std::move(stream)), patience_(patience) {}

void BridgeConnection::startReading(MainQueue& queue) {
  watch_ = queue.watchReadable(stream_.descriptor(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->readSome();
  });
}

// Reads only once per call, so that a busy bridge leaves time for the others.
void BridgeConnection::readSome() {
  std::array<char, readSize> buffer;
  std::string_view bytes;
  const auto reading = stream_.read(buffer.data(), buffer.size(), bytes);
  if (reading == LocalStream::Reading::nothingYet) return;
  if (reading == LocalStream::Reading::ended) {
    watch_.reset();
    if (const auto closed = std::exchange(onClosed, nullptr)) closed();
    return;
  }
  lines_.append(bytes);
  while (const auto line = lines_.next())
    if (const auto message = json::object(*line); message && onMessage) onMessage(*message);
}

void BridgeConnection::send(const Message& message) {
  const std::string line = json::compact(message) + '\n';
  std::string_view left = line;
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  while (true) {
    const auto sent = stream_.send(left);
    if (!sent) break;
    left.remove_prefix(*sent);
    if (left.empty()) return;
    if (!stream_.waitForRoom(deadline)) break;
  }
  stream_.shutDown();
}

}  // namespace tollvane
