#include "platform/linux/apps/x11_windows.h"

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace tollvane {

namespace {

using namespace std::chrono_literals;

constexpr Duration kGoodFor = 100ms;
constexpr Duration kPatience = 250ms;
constexpr Duration kRest = 5s;

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

std::string hostName() {
  char name[HOST_NAME_MAX + 1] = {};
  return ::gethostname(name, HOST_NAME_MAX) == 0 ? name : std::string();
}

// Toolkits write the host's name with or without its domain.
bool isThisHost(std::string_view machine) {
  const std::string host = hostName();
  const std::string_view full = host;
  return machine == full || machine.substr(0, machine.find('.')) == full.substr(0, full.find('.'));
}

bool isDisplayLocal() {
  const char* display = std::getenv("DISPLAY");
  return display != nullptr && (display[0] == ':' || display[0] == '/' || std::strncmp(display, "unix", 4) == 0);
}

// The questions about one window, asked all at once; the answers are taken later.
struct Questions {
  xcb_window_t window;
  xcb_get_property_cookie_t pid, type, transientFor, machine, windowClass;
};

}  // namespace

class XcbWindows::Connection {
 public:
  Connection() : connection_(xcb_connect(nullptr, &screen_)) {}
  ~Connection() { xcb_disconnect(connection_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }

  // False when the server did not answer in time, or went away.
  bool read(std::vector<X11Window>& windows) {
    timedOut_ = false;
    deadline_ = std::chrono::steady_clock::now() + kPatience;
    dropEvents();
    if (!findAtoms()) return false;
    std::vector<Questions> questions;
    for (const xcb_window_t window : clients()) questions.push_back(ask(window));
    for (const Questions& question : questions) {
      if (auto found = answer(question)) windows.push_back(std::move(*found));
    }
    return !timedOut_ && isAlive();
  }

 private:
  // Some events (a changed keyboard mapping) come to everybody who is connected.
  void dropEvents() {
    while (Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    }
  }

  // Null on an error, too: a window may vanish between two questions.
  template <typename Reply>
  Owned<Reply> take(unsigned sequence) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    xcb_flush(connection_);
    while (!timedOut_ && isAlive()) {
      if (xcb_poll_for_reply(connection_, sequence, &reply, &error) != 0) {
        std::free(error);
        return Owned<Reply>(static_cast<Reply*>(reply));
      }
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
      pollfd descriptor{xcb_get_file_descriptor(connection_), POLLIN, 0};
      if (left <= 0ms || ::poll(&descriptor, 1, static_cast<int>(left.count())) == 0) timedOut_ = true;
    }
    xcb_discard_reply(connection_, sequence);
    return nullptr;
  }

  bool findAtoms() {
    if (haveAtoms_) return true;
    constexpr std::string_view kNames[] = {"_NET_CLIENT_LIST", "_NET_WM_PID", "_NET_WM_WINDOW_TYPE",
                                           "_NET_WM_WINDOW_TYPE_NORMAL"};
    xcb_atom_t* const atoms[] = {&clientList_, &wmPid_, &windowType_, &normal_};
    xcb_intern_atom_cookie_t cookies[std::size(kNames)];
    for (std::size_t i = 0; i < std::size(kNames); ++i)
      cookies[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(kNames[i].size()), kNames[i].data());
    bool complete = true;
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
      const auto reply = take<xcb_intern_atom_reply_t>(cookies[i].sequence);
      if (reply) *atoms[i] = reply->atom;
      complete = complete && reply != nullptr;
    }
    return haveAtoms_ = complete;
  }

  xcb_get_property_cookie_t property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint32_t words) {
    return xcb_get_property(connection_, 0, window, name, type, 0, words);
  }

  template <typename Value>
  std::vector<Value> values(xcb_get_property_cookie_t cookie) {
    const auto reply = take<xcb_get_property_reply_t>(cookie.sequence);
    if (!reply || reply->format != sizeof(Value) * CHAR_BIT) return {};
    const auto* first = static_cast<const Value*>(xcb_get_property_value(reply.get()));
    return {first, first + static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / sizeof(Value)};
  }

  std::vector<xcb_window_t> clients() {
    constexpr std::uint32_t kMostWindows = 4096;
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    auto screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < screen_ && screens.rem > 1; ++i) xcb_screen_next(&screens);
    if (screens.rem == 0) return {};
    return values<xcb_window_t>(property(screens.data->root, clientList_, XCB_ATOM_WINDOW, kMostWindows));
  }

  Questions ask(xcb_window_t window) {
    return {window,
            property(window, wmPid_, XCB_ATOM_CARDINAL, 1),
            property(window, windowType_, XCB_ATOM_ATOM, 32),
            property(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 1),
            property(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_GET_PROPERTY_TYPE_ANY, 64),
            property(window, XCB_ATOM_WM_CLASS, XCB_GET_PROPERTY_TYPE_ANY, 256)};
  }

  std::optional<X11Window> answer(const Questions& question) {
    // All answers are taken, whatever the first one says: xcb would keep the others for ever.
    const auto pid = values<std::uint32_t>(question.pid);
    const auto types = values<xcb_atom_t>(question.type);
    const auto transientFor = values<xcb_window_t>(question.transientFor);
    const auto machine = values<char>(question.machine);
    const auto names = values<char>(question.windowClass);
    if (pid.empty() || pid.front() == 0 || pid.front() > static_cast<std::uint32_t>(INT32_MAX)) return std::nullopt;
    const bool normal = types.empty() ? transientFor.empty() || transientFor.front() == XCB_NONE
                                      : std::find(types.begin(), types.end(), normal_) != types.end();
    if (!normal) return std::nullopt;
    const std::string_view host(machine.data(), machine.size());
    // Who leaves the machine out cannot be far away on a server that is reached without a network.
    if (host.empty() ? !isDisplayLocal() : !isThisHost(host.substr(0, host.find('\0')))) return std::nullopt;

    X11Window window{static_cast<Pid>(pid.front()), "", ""};
    const std::string_view both(names.data(), names.size());
    window.instance = both.substr(0, both.find('\0'));
    if (window.instance.size() < both.size()) {
      const std::string_view second = both.substr(window.instance.size() + 1);
      window.windowClass = second.substr(0, second.find('\0'));
    }
    return window;
  }

  int screen_ = 0;
  xcb_connection_t* connection_;  // never null, even when connecting failed
  std::chrono::steady_clock::time_point deadline_;
  bool timedOut_ = false;
  bool haveAtoms_ = false;
  xcb_atom_t clientList_ = 0, wmPid_ = 0, windowType_ = 0, normal_ = 0;
};

XcbWindows::XcbWindows(const Clock& clock) : clock_(clock) {}

XcbWindows::~XcbWindows() = default;

const std::vector<X11Window>& XcbWindows::normalWindows() {
  const Instant now = clock_.steadyNow();
  if (now < validUntil_) return windows_;
  windows_.clear();
  validUntil_ = now + kGoodFor;
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') return windows_;
  // A server that was restarted is worth a second try at once.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const bool fresh = connection_ == nullptr;
    if (fresh) connection_ = std::make_unique<Connection>();
    if (connection_->isAlive()) {
      if (connection_->read(windows_)) break;
      windows_.clear();
      // Connecting anew would wait without a limit for a server that stands still: keep what there is.
      if (connection_->isAlive()) {
        validUntil_ = now + kRest;
        break;
      }
    }
    connection_.reset();
    if (fresh) break;
  }
  return windows_;
}

}  // namespace tollvane
