#include "browser/bridge_connection.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

void BridgeConnection::startReading() {
  readable_ = queue_.watchReadable(stream_.descriptor(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->readSome();
  });
}

// Reads only once per call, so that a busy bridge leaves time for the others.
void BridgeConnection::readSome() {
  std::array<char, readInOneTurn> buffer;
  std::string_view bytes;
  const auto reading = stream_.read(buffer.data(), buffer.size(), bytes);
  if (reading == LocalStream::Reading::nothingYet) return;
  if (reading == LocalStream::Reading::ended) {
    readable_.reset();
    writable_.reset();
    if (const auto closed = std::exchange(onClosed, nullptr)) closed();
    return;
  }
  lines_.append(bytes);
  while (const auto line = lines_.next())
    if (const auto message = json::object(*line); message && onMessage) onMessage(*message);
}

void BridgeConnection::send(const Message& message) {
  outbox_.push(json::compact(message) + '\n');
  writeSome();
}

void BridgeConnection::writeSome() {
  if (!outbox_.flush(stream_) || outbox_.size() > mostUnread) {
    outbox_.clear();
    stream_.shutDown();
  }
  if (outbox_.empty()) return writable_.reset();
  if (writable_) return;
  writable_ = queue_.watchWritable(stream_.descriptor(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->writeSome();
  });
}

}  // namespace tollvane
