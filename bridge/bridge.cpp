#include "bridge/bridge.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace tollvane::bridge {
namespace {

constexpr std::size_t readSize = 64 * 1024;
constexpr short hungUp = POLLHUP | POLLERR | POLLNVAL;

// poll(2) skips a negative descriptor. We skip a descriptor that we want nothing from, because its hang-up would wake
// us again and again.
pollfd query(int descriptor, short events) { return {events ? descriptor : -1, events, 0}; }

enum class Reading { some, nothingNow, ended };

Reading read(int descriptor, char* buffer, std::string_view& bytes) {
  const ssize_t size = ::read(descriptor, buffer, readSize);
  if (size < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) return Reading::nothingNow;
  if (size <= 0) return Reading::ended;
  bytes = {buffer, static_cast<std::size_t>(size)};
  return Reading::some;
}

}  // namespace

struct Bridge::Events {
  short input = 0;
  short output = 0;
  short process = 0;
  short application = 0;
  short watch = 0;
};

Bridge::Bridge(Browser browser, const std::vector<std::string>& sockets, Relay relay)
    : browser_(std::move(browser)), relay_(std::move(relay)), buffer_(new char[readSize]) {
  for (const std::string& socket : sockets)
    places_.push_back({fittingSocketPath(socket), PathWatch(fittingSocketPath(socket))});
}

void Bridge::run() {
  seek();
  while (true) {
    // A browser that does not read is not told of every application that comes meanwhile.
    if (relay_.toBrowser.size() < mostWaiting) relay_.announce();
    const Events events = wait();
    if (events.process || !serveInput(events) || !serveOutput(events)) return;
    serveApplication(events);
    if (events.watch && somethingAppeared()) {
      delay_.appeared();
      seek();
    }
    serveTimers();
  }
}

Bridge::Events Bridge::wait() {
  const bool applicationReads = relay_.toApplication.size() < mostWaiting;
  const bool browserReads = relay_.toBrowser.size() < mostWaiting;
  const short toApplication = relay_.toApplication.empty() ? 0 : POLLOUT;
  const short fromApplication = browserReads ? POLLIN : 0;
  std::vector<pollfd> queries = {
      // The browser's descriptors are never skipped: we must notice when the browser closes them.
      {browser_.input, static_cast<short>(applicationReads ? POLLIN : 0), 0},
      {browser_.output, static_cast<short>(relay_.toBrowser.empty() ? 0 : POLLOUT), 0},
      query(browser_.process.get(), POLLIN),
      query(application_.descriptor(), static_cast<short>(toApplication | fromApplication)),
  };
  const std::size_t watches = queries.size();
  // While connected, the watches are not read; their events are handled after the connection has ended.
  for (const Place& place : places_) queries.push_back(query(place.watch.descriptor(), application_ ? 0 : POLLIN));
  if (poll(queries.data(), queries.size(), timeout()) < 0) return {};
  Events events{queries[0].revents, queries[1].revents, queries[2].revents, queries[3].revents};
  for (std::size_t i = watches; i < queries.size(); ++i)
    events.watch = static_cast<short>(events.watch | queries[i].revents);
  return events;
}

// Takes the events of all watches.
bool Bridge::somethingAppeared() {
  bool appeared = false;
  for (Place& place : places_) appeared |= place.watch.appeared();
  return appeared;
}

// How long poll(2) may wait, in milliseconds; -1 if there is no timer.
int Bridge::timeout() const {
  const auto next = application_ ? leaveAt_ : seekAt_;
  if (!next) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

// False if the browser sends no more.
bool Bridge::serveInput(const Events& events) {
  if (!(events.input & POLLIN)) return !(events.input & hungUp);
  std::string_view bytes;
  const Reading reading = read(browser_.input, buffer_.get(), bytes);
  if (reading == Reading::some) {
    relay_.fromBrowser(bytes);
    flushToApplication();
  }
  return reading != Reading::ended;
}

// False if the browser reads no more.
bool Bridge::serveOutput(const Events& events) {
  return !(events.output & hungUp) && relay_.toBrowser.flush(browser_.output);
}

void Bridge::serveApplication(const Events& events) {
  if (!application_ || !events.application) return;
  flushToApplication();
  if (!application_ || relay_.toBrowser.size() >= mostWaiting) return;
  std::string_view bytes;
  const Reading reading = read(application_.descriptor(), buffer_.get(), bytes);
  if (reading == Reading::ended) return leave();
  if (reading == Reading::nothingNow) return;
  relay_.fromApplication(bytes);
  if (relay_.answered()) delay_.reset();
  // If this fails, the next serveOutput() notices.
  relay_.toBrowser.flush(browser_.output);
}

void Bridge::serveTimers() {
  const auto now = Clock::now();
  if (application_ && leaveAt_ && now >= *leaveAt_) {
    // The kernel reports room only if there is much of it. An application that reads slowly may have made some room.
    flushToApplication();
    if (application_ && leaveAt_ && now >= *leaveAt_) leave();
  }
  if (!application_ && seekAt_ && now >= *seekAt_) seek();
}

void Bridge::seek() {
  for (const Place& place : places_) {
    application_ = LocalStream::to(place.socket);
    if (application_) break;
  }
  leaveAt_.reset();
  seekAt_.reset();
  if (!application_) {
    seekAt_ = Clock::now() + delay_.next();
    return;
  }
  relay_.connected();
  flushToApplication();
}

void Bridge::leave() {
  application_.close();
  relay_.disconnected();
  leaveAt_.reset();
  seekAt_ = Clock::now() + delay_.next();
}

void Bridge::flushToApplication() {
  if (!application_) return;
  const std::size_t before = relay_.toApplication.size();
  if (!relay_.toApplication.flush(application_.descriptor())) return leave();
  const std::size_t waiting = relay_.toApplication.size();
  if (waiting == 0) {
    leaveAt_.reset();
  } else if (!leaveAt_ || waiting < before) {
    leaveAt_ = Clock::now() + patience;
  }
}

}  // namespace tollvane::bridge
