#include "platform/linux/x11/x11_windows.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <utility>

#include "platform/linux/x11/x11_connection.h"

namespace tollvane {

namespace {

using namespace std::chrono_literals;

constexpr Duration goodFor = 100ms;
constexpr auto patience = 250ms;
constexpr Duration rest = 5s;

// The questions about one window, asked all at once; the answers are taken later.
struct Questions {
  X11Owner::Questions owner;
  xcb_get_property_cookie_t type, transientFor;
};

}  // namespace

class XcbWindows::Connection {
 public:
  bool isAlive() const { return x11_.isAlive(); }

  // False when the server did not answer in time, or went away.
  bool read(std::vector<X11Window>& windows) {
    x11_.beginQuestions(patience);
    dropEvents();
    if (!findAtoms()) return false;
    std::vector<Questions> questions;
    for (const xcb_window_t window : clients()) questions.push_back(ask(window));
    for (const Questions& question : questions) {
      if (auto found = answer(question)) windows.push_back(std::move(*found));
    }
    return !x11_.timedOut() && isAlive();
  }

 private:
  // Some events (a changed keyboard mapping) come to everybody who is connected.
  void dropEvents() {
    while (X11Connection::Owned<xcb_generic_event_t> event{xcb_poll_for_event(x11_.get())}) {
    }
  }

  bool findAtoms() {
    if (haveAtoms_) return true;
    const auto atoms =
        x11_.atoms({"_NET_CLIENT_LIST", "_NET_WM_PID", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_NORMAL"});
    clientList_ = atoms[0];
    wmPid_ = atoms[1];
    windowType_ = atoms[2];
    normal_ = atoms[3];
    return haveAtoms_ = std::find(atoms.begin(), atoms.end(), XCB_ATOM_NONE) == atoms.end();
  }

  std::vector<xcb_window_t> clients() {
    constexpr std::uint32_t mostWindows = 4096;
    const xcb_window_t root = x11_.root();
    if (root == XCB_NONE) return {};
    return x11_.values<xcb_window_t>(x11_.property(root, clientList_, XCB_ATOM_WINDOW, mostWindows));
  }

  Questions ask(xcb_window_t window) const {
    return {X11Owner::ask(x11_, window, wmPid_), x11_.property(window, windowType_, XCB_ATOM_ATOM, 32),
            x11_.property(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 1)};
  }

  std::optional<X11Window> answer(const Questions& question) {
    X11Owner owner = X11Owner::answer(x11_, question.owner);
    const auto types = x11_.values<xcb_atom_t>(question.type);
    const auto transientFor = x11_.values<xcb_window_t>(question.transientFor);
    const bool normal = types.empty() ? transientFor.empty() || transientFor.front() == XCB_NONE
                                      : std::find(types.begin(), types.end(), normal_) != types.end();
    if (owner.pid == 0 || !normal) return std::nullopt;
    return X11Window{owner.pid, std::move(owner.instance), std::move(owner.windowClass)};
  }

  X11Connection x11_;
  bool haveAtoms_ = false;
  xcb_atom_t clientList_ = 0, wmPid_ = 0, windowType_ = 0, normal_ = 0;
};

XcbWindows::XcbWindows(const Clock& clock) : clock_(clock) {}

XcbWindows::~XcbWindows() = default;

const std::vector<X11Window>& XcbWindows::normalWindows() {
  const Instant now = clock_.steadyNow();
  if (now < validUntil_) return windows_;
  windows_.clear();
  validUntil_ = now + goodFor;
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') return windows_;
  // A server that was restarted is worth a second try at once.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const bool fresh = !connection_;
    if (!connection_) connection_ = std::make_unique<Connection>();
    if (connection_->isAlive()) {
      if (connection_->read(windows_)) break;
      windows_.clear();
      // Connecting anew would wait without a limit for a server that stands still: keep what there is.
      if (connection_->isAlive()) {
        validUntil_ = now + rest;
        break;
      }
    }
    connection_.reset();
    if (fresh) break;
  }
  return windows_;
}

}  // namespace tollvane
