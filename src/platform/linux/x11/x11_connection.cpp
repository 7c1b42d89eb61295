#include "platform/linux/x11/x11_connection.h"

#include <poll.h>
#include <unistd.h>
#include <xcb/xcbext.h>

#include <cstdint>
#include <cstring>

namespace tollvane {
namespace {

using namespace std::chrono_literals;

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

}  // namespace

xcb_window_t X11Connection::root() const {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
  for (int i = 0; i < screen_ && screens.rem > 1; ++i) xcb_screen_next(&screens);
  return screens.rem == 0 ? static_cast<xcb_window_t>(XCB_NONE) : screens.data->root;
}

void X11Connection::beginQuestions(std::chrono::milliseconds patience) {
  timedOut_ = false;
  deadline_ = std::chrono::steady_clock::now() + patience;
}

bool X11Connection::waitForInput() {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
  pollfd descriptor{xcb_get_file_descriptor(connection_), POLLIN, 0};
  if (left.count() <= 0 || ::poll(&descriptor, 1, static_cast<int>(left.count())) == 0) timedOut_ = true;
  return !timedOut_;
}

void* X11Connection::takeAny(unsigned sequence) {
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  xcb_flush(connection_);
  while (!timedOut_ && isAlive()) {
    if (xcb_poll_for_reply(connection_, sequence, &reply, &error) != 0) {
      std::free(error);
      return reply;
    }
    waitForInput();
  }
  xcb_discard_reply(connection_, sequence);
  return nullptr;
}

X11Connection::Owned<xcb_generic_event_t> X11Connection::waitForEvent() {
  xcb_flush(connection_);
  while (!timedOut_ && isAlive()) {
    if (Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) return event;
    waitForInput();
  }
  return nullptr;
}

std::vector<xcb_atom_t> X11Connection::atoms(const std::vector<std::string_view>& names) {
  std::vector<xcb_intern_atom_cookie_t> cookies;
  for (const std::string_view name : names)
    cookies.push_back(xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
  std::vector<xcb_atom_t> atoms;
  for (const auto& cookie : cookies) {
    const auto reply = take<xcb_intern_atom_reply_t>(cookie.sequence);
    atoms.push_back(reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE));
  }
  return atoms;
}

X11Owner::Questions X11Owner::ask(const X11Connection& connection, xcb_window_t window, xcb_atom_t netWmPid) {
  return {connection.property(window, netWmPid, XCB_ATOM_CARDINAL, 1),
          connection.property(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_GET_PROPERTY_TYPE_ANY, 64),
          connection.property(window, XCB_ATOM_WM_CLASS, XCB_GET_PROPERTY_TYPE_ANY, 256)};
}

X11Owner X11Owner::answer(X11Connection& connection, const Questions& questions) {
  // All answers are taken, whatever the first one says: xcb would keep the others for ever.
  const auto pid = connection.values<std::uint32_t>(questions.pid);
  const auto machine = connection.values<char>(questions.machine);
  const auto names = connection.values<char>(questions.windowClass);
  X11Owner owner;
  const std::string_view host(machine.data(), machine.size());
  // Who leaves the machine out cannot be far away on a server that is reached without a network.
  const bool near = host.empty() ? isDisplayLocal() : isThisHost(host.substr(0, host.find('\0')));
  if (near && !pid.empty() && pid.front() <= static_cast<std::uint32_t>(INT32_MAX))
    owner.pid = static_cast<Pid>(pid.front());
  const std::string_view both(names.data(), names.size());
  owner.instance = both.substr(0, both.find('\0'));
  if (owner.instance.size() < both.size()) {
    const std::string_view second = both.substr(owner.instance.size() + 1);
    owner.windowClass = second.substr(0, second.find('\0'));
  }
  return owner;
}

}  // namespace tollvane
