#include "platform/linux/x11/x11_desktop.h"

#include <string>

#include "platform/linux/x11/x11_connection.h"

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds desktopPatience{500};

}  // namespace

X11Desktop X11Desktop::find() {
  X11Desktop desktop;
  X11Connection x11;
  if (!x11.isAlive() || x11.root() == XCB_NONE) return desktop;
  x11.beginQuestions(desktopPatience);
  const std::string tray = "_NET_SYSTEM_TRAY_S" + std::to_string(x11.screenNumber());
  const auto atoms = x11.atoms({"_NET_SUPPORTING_WM_CHECK", tray});
  const auto check = x11.values<xcb_window_t>(x11.property(x11.root(), atoms[0], XCB_ATOM_WINDOW, 1));
  desktop.hasWindowManager = !check.empty() && check.front() != XCB_NONE;
  const auto owner = xcb_get_selection_owner(x11.get(), atoms[1]);
  const auto reply = x11.take<xcb_get_selection_owner_reply_t>(owner.sequence);
  desktop.hasTray = reply && reply->owner != XCB_NONE;
  return desktop;
}

}  // namespace tollvane
