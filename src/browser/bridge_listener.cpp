#include "browser/bridge_listener.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <utility>

namespace tollvane {
namespace {

constexpr std::chrono::seconds breather{1};  // the pause after the process ran out of file descriptors

}  // namespace

void BridgeListener::open(const std::string& path) {
  path_ = path;
  listen();
}

void BridgeListener::listen() {
  ownersWatch_.reset();
  owner_.close();
  watch_.reset();
  listener_.close();
  files_.createDirectories(std::filesystem::path(path_).parent_path());
  listener_ = LocalListener::at(path_);
  if (listener_) watch();
  watchFolder();
  if (!listener_) lookLater(delay_);
  delay_ = listener_ ? retryDelay : std::min<Duration>(2 * delay_, longestRetryDelay);
}

void BridgeListener::watchFolder() {
  foldersWatch_ = queue_.watchDirectory(std::filesystem::path(path_).parent_path(), [this] { lookLater(settling); });
  if (!foldersWatch_) lookLater(delay_);
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

// One look for many changes, after they are over: a new socket in a folder that is being removed would disturb that.
void BridgeListener::lookLater(Duration delay) {
  if (std::exchange(lookIsDue_, true)) return;
  queue_.after(delay, alive_.guard([this] {
    lookIsDue_ = false;
    if (!path_.empty()) look();
  }));
}

void BridgeListener::look() {
  const auto standing = listener_ ? listener_.standing() : LocalListener::Standing::missing;
  const bool replaced = standing == LocalListener::Standing::replaced && isAnswered(path_);
  if (standing != LocalListener::Standing::own && !replaced) return listen();
  if (replaced && !owner_) awaitEndOfOwner();
  if (!foldersWatch_) watchFolder();
}

// The other Tollvane may end without removing its socket, so the end is heard on a connection to it.
void BridgeListener::awaitEndOfOwner() {
  owner_ = LocalStream::to(path_);
  if (!owner_) return lookLater(retryDelay);
  ownersWatch_ = queue_.watchReadable(owner_.descriptor(), [this] {
    std::array<char, 256> buffer;
    std::string_view unused;
    if (owner_.read(buffer.data(), buffer.size(), unused) != LocalStream::Reading::ended) return;
    ownersWatch_.reset();
    owner_.close();
    lookLater(settling);
  });
}

void BridgeListener::close() {
  path_.clear();
  foldersWatch_.reset();
  ownersWatch_.reset();
  owner_.close();
  watch_.reset();
  listener_.close();
}

}  // namespace tollvane
