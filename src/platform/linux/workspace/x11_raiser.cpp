#include "platform/linux/workspace/x11_raiser.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/x11/x11_connection.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

constexpr auto questionPatience = 250ms;
constexpr auto managerPatience = 500ms;

// EWMH: who asks. A pager asks on behalf of the user, and is not suspected of stealing the focus.
constexpr std::uint32_t sourceIsPager = 2;

struct Atoms {
  xcb_atom_t clients, active, workspace, windowsWorkspace, pid, type, normal, dialog, state, attention, stamp, title,
      utf8;

  bool find(X11Connection& x11) {
    const auto found = x11.atoms({"_NET_CLIENT_LIST_STACKING", "_NET_ACTIVE_WINDOW", "_NET_CURRENT_DESKTOP",
                                  "_NET_WM_DESKTOP", "_NET_WM_PID", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_NORMAL",
                                  "_NET_WM_WINDOW_TYPE_DIALOG", "_NET_WM_STATE", "_NET_WM_STATE_DEMANDS_ATTENTION",
                                  "_TOLLVANE_TIMESTAMP", "_NET_WM_NAME", "UTF8_STRING"});
    xcb_atom_t* const places[] = {&clients, &active, &workspace, &windowsWorkspace, &pid,   &type,
                                  &normal,  &dialog, &state,     &attention,        &stamp, &title,
                                  &utf8};
    for (std::size_t i = 0; i < found.size(); ++i) *places[i] = found[i];
    return std::find(found.begin(), found.end(), XCB_ATOM_NONE) == found.end();
  }
};

// One activation, from the question which window it is to the window manager's deed. Deletes itself when it is over.
class Activation : public QObject {
 public:
  explicit Activation(std::function<void(Raised)> done)
      : QObject(QCoreApplication::instance()), done_(std::move(done)) {}

  bool connect() {
    if (!x11_.isAlive() || x11_.root() == XCB_NONE) return false;
    x11_.beginQuestions(questionPatience);
    return atoms_.find(x11_);
  }

  void start(const ActivationTarget& target) {
    const auto windows = managedWindows();
    // No list: there is no window manager that could be asked.
    if (!windows) return finish(Raised::unknown);
    matches_ = bestOf(*windows, target);
    if (x11_.timedOut()) return finish(Raised::unknown);
    if (matches_.empty()) return finish(isWholeDesktop() ? Raised::noWindow : Raised::unknown);
    if (!target.title.empty()) preferActive();
    ask(matches_.back());
  }

  void startWith(xcb_window_t window) {
    matches_ = {window};
    ask(window);
  }

 private:
  // A desktop that is Wayland's shows its X server's windows among others.
  static bool isWholeDesktop() { return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"); }

  // In the order of their height, the topmost last.
  std::optional<std::vector<xcb_window_t>> managedWindows() {
    constexpr std::uint32_t mostWindows = 4096;
    const auto cookie = x11_.property(x11_.root(), atoms_.clients, XCB_ATOM_WINDOW, mostWindows);
    const auto reply = x11_.take<xcb_get_property_reply_t>(cookie.sequence);
    if (!reply || reply->type != XCB_ATOM_WINDOW) return std::nullopt;
    return X11Connection::valuesOf<xcb_window_t>(*reply);
  }

  // Those that fit best, and all equally well.
  std::vector<xcb_window_t> bestOf(const std::vector<xcb_window_t>& windows, const ActivationTarget& target) {
    struct Questions {
      xcb_window_t window;
      X11Owner::Questions owner;
      xcb_get_property_cookie_t type;
    };
    std::vector<Questions> questions;
    for (const xcb_window_t window : windows) {
      questions.push_back(
          {window, X11Owner::ask(x11_, window, atoms_.pid), x11_.property(window, atoms_.type, XCB_ATOM_ATOM, 32)});
    }
    std::vector<xcb_window_t> best;
    ActivationTarget::Fit bestFit{};
    for (const Questions& question : questions) {
      const X11Owner owner = X11Owner::answer(x11_, question.owner);
      const auto types = x11_.values<xcb_atom_t>(question.type);
      const auto rank = target.rank(owner.pid, {owner.instance, owner.windowClass});
      if (!rank || !isForPeople(types)) continue;
      const auto fit = target.fit(*rank, target.title.empty() ? "" : titleOf(question.window));
      if (!fit || (!best.empty() && *fit > bestFit)) continue;
      if (!best.empty() && *fit < bestFit) best.clear();
      bestFit = *fit;
      best.push_back(question.window);
    }
    return best;
  }

  // Several windows may have the tab's title, or none if the page has changed it meanwhile: the one that is in front
  // already stays there.
  void preferActive() {
    const auto active = activeWindow();
    if (contains(matches_, active)) matches_ = {active};
  }

  std::string titleOf(xcb_window_t window) {
    constexpr std::uint32_t longest = 1024;  // words of four bytes
    std::vector<char> title = x11_.values<char>(x11_.property(window, atoms_.title, atoms_.utf8, longest));
    // Old programs have no other.
    if (title.empty())
      title = x11_.values<char>(x11_.property(window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, longest));
    return {title.begin(), title.end()};
  }

  xcb_window_t activeWindow() {
    const auto active = x11_.values<xcb_window_t>(x11_.property(x11_.root(), atoms_.active, XCB_ATOM_WINDOW, 1));
    return active.empty() ? XCB_NONE : active.front();
  }

  // Neither a panel nor a desktop nor a tooltip.
  bool isForPeople(const std::vector<xcb_atom_t>& types) const {
    return types.empty() || std::any_of(types.begin(), types.end(), [&](xcb_atom_t type) {
             return type == atoms_.normal || type == atoms_.dialog;
           });
  }

  void ask(xcb_window_t window) {
    const std::uint32_t changes = XCB_EVENT_MASK_PROPERTY_CHANGE;
    const std::uint32_t changesAndEnd = changes | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(x11_.get(), x11_.root(), XCB_CW_EVENT_MASK, &changes);
    xcb_change_window_attributes(x11_.get(), window, XCB_CW_EVENT_MASK, &changesAndEnd);
    const xcb_timestamp_t now = serverTime();
    if (const auto workspace = otherWorkspaceOf(window)) tellManager(x11_.root(), atoms_.workspace, *workspace, now);
    tellManager(window, atoms_.active, sourceIsPager, now);
    if (x11_.timedOut()) return finish(Raised::unknown);
    xcb_flush(x11_.get());
    watch();
  }

  void tellManager(xcb_window_t window, xcb_atom_t message, std::uint32_t first, std::uint32_t second) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = message;
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    xcb_send_event(x11_.get(), 0, x11_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
  }

  // Some window managers do not leave the current workspace for a window's sake, and have to be told that, too.
  std::optional<std::uint32_t> otherWorkspaceOf(xcb_window_t window) {
    constexpr std::uint32_t everywhere = 0xFFFFFFFF;
    const auto own = x11_.values<std::uint32_t>(x11_.property(window, atoms_.windowsWorkspace, XCB_ATOM_CARDINAL, 1));
    const auto current = x11_.values<std::uint32_t>(x11_.property(x11_.root(), atoms_.workspace, XCB_ATOM_CARDINAL, 1));
    if (own.empty() || current.empty() || own.front() == everywhere || own == current) return std::nullopt;
    return own.front();
  }

  // Window managers compare with the time of the user's last action; "now" (0) loses against everything. A property
  // that is changed by nothing gives the server's own clock.
  xcb_timestamp_t serverTime() {
    const xcb_window_t window = xcb_generate_id(x11_.get());
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(x11_.get(), 0, window, x11_.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_change_property(x11_.get(), XCB_PROP_MODE_APPEND, window, atoms_.stamp, XCB_ATOM_INTEGER, 8, 0, nullptr);
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    while (const auto event = x11_.waitForEvent()) {
      const auto* changed = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
      if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY || changed->window != window) continue;
      time = changed->time;
      break;
    }
    xcb_destroy_window(x11_.get(), window);
    return time;
  }

  void watch() {
    notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(x11_.get()), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { look(); });
    QTimer::singleShot(managerPatience, this, [this] { giveUp(); });
    look();
  }

  void look() {
    while (X11Connection::Owned<xcb_generic_event_t> event{xcb_poll_for_event(x11_.get())}) {
    }
    if (!x11_.isAlive()) return finish(Raised::unknown);
    x11_.beginQuestions(questionPatience);
    if (isInFront() || wantsAttention()) {
      finish(Raised::yes);
      // A reply may have brought events along, which will not make the descriptor readable again.
    } else if (X11Connection::Owned<xcb_generic_event_t> event{xcb_poll_for_queued_event(x11_.get())}) {
      QMetaObject::invokeMethod(
          this, [this] { look(); }, Qt::QueuedConnection);
    }
  }

  // A dialog of the window may take the focus in its place.
  bool isInFront() {
    const xcb_window_t active = activeWindow();
    if (active == XCB_NONE) return false;
    if (contains(matches_, active)) return true;
    const auto owner = x11_.values<xcb_window_t>(x11_.property(active, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 1));
    return !owner.empty() && contains(matches_, owner.front());
  }

  bool wantsAttention() {
    const auto states = x11_.values<xcb_atom_t>(x11_.property(matches_.back(), atoms_.state, XCB_ATOM_ATOM, 32));
    return std::find(states.begin(), states.end(), atoms_.attention) != states.end();
  }

  static bool contains(const std::vector<xcb_window_t>& windows, xcb_window_t window) {
    return std::find(windows.begin(), windows.end(), window) != windows.end();
  }

  // Time has passed. Where the window is still there, nobody knows better.
  void giveUp() {
    x11_.beginQuestions(questionPatience);
    const auto windows = managedWindows();
    const bool gone = windows && !contains(*windows, matches_.back());
    finish(gone && isWholeDesktop() ? Raised::noWindow : Raised::unknown);
  }

  void finish(Raised raised) {
    if (!done_) return;
    const auto done = std::exchange(done_, nullptr);
    notifier_.reset();
    deleteLater();
    done(raised);
  }

  std::function<void(Raised)> done_;
  X11Connection x11_;
  Atoms atoms_{};
  std::vector<xcb_window_t> matches_;  // the topmost last: that one is asked for
  std::unique_ptr<QSocketNotifier> notifier_;
};

bool hasServer() { return !qEnvironmentVariableIsEmpty("DISPLAY"); }

template <typename Begin>
void begin(std::function<void(Raised)> done, const Begin& start) {
  if (!hasServer()) return done(Raised::unknown);
  auto activation = std::make_unique<Activation>(done);
  if (!activation->connect()) return done(Raised::unknown);
  start(*activation.release());
}

}  // namespace

void X11Raiser::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  begin(std::move(done), [&](Activation& activation) { activation.start(target); });
}

void X11Raiser::raiseOwn(std::uint32_t window, std::function<void(Raised)> done) {
  begin(std::move(done), [&](Activation& activation) { activation.startWith(window); });
}

}  // namespace tollvane
