#include "browser/bridge_listener.h"

#include <chrono>
#include <utility>

namespace tollvane {
namespace {

constexpr std::chrono::seconds breather{1};  // after the process ran out of descriptors

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
  // The caller stays in the queue, and the socket readable: looking at it again and again would not help.
  watch_.reset();
  queue_.after(breather, alive_.guard([this] {
    if (listener_ && !watch_) watch();
  }));
}

void BridgeListener::close() {
  watch_.reset();
  listener_.close();
}

}  // namespace tollvane
