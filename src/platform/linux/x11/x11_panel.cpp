#include "platform/linux/x11/x11_panel.h"

#include <algorithm>

#include "platform/linux/x11/x11_connection.h"

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds panelPatience{100};
constexpr int deepest = 8;  // a window manager's frame, the panel, and what it holds
constexpr std::uint32_t mostTypes = 32;

std::optional<X11Area> areaOf(X11Connection& x11, xcb_window_t window) {
  const auto size = xcb_get_geometry(x11.get(), window);
  const auto place = xcb_translate_coordinates(x11.get(), window, x11.root(), 0, 0);
  const auto geometry = x11.take<xcb_get_geometry_reply_t>(size.sequence);
  const auto corner = x11.take<xcb_translate_coordinates_reply_t>(place.sequence);
  if (!geometry || !corner) return std::nullopt;
  return X11Area{corner->dst_x, corner->dst_y, geometry->width, geometry->height};
}

}  // namespace

std::optional<X11Area> panelAt(int x, int y) {
  X11Connection x11;
  if (!x11.isAlive() || x11.root() == XCB_NONE) return std::nullopt;
  x11.beginQuestions(panelPatience);
  const auto atoms = x11.atoms({"_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK"});
  xcb_window_t window = x11.root();
  for (int depth = 0; depth < deepest; ++depth) {
    const auto place = xcb_translate_coordinates(x11.get(), x11.root(), window, static_cast<std::int16_t>(x),
                                                 static_cast<std::int16_t>(y));
    const auto within = x11.take<xcb_translate_coordinates_reply_t>(place.sequence);
    if (!within || within->child == XCB_NONE) break;
    window = within->child;
    const auto types = x11.values<xcb_atom_t>(x11.property(window, atoms[0], XCB_ATOM_ATOM, mostTypes));
    if (std::find(types.begin(), types.end(), atoms[1]) != types.end()) return areaOf(x11, window);
  }
  return std::nullopt;
}

}  // namespace tollvane
