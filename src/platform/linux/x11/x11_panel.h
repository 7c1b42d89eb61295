// The panel under a point of the user's X11 desktop. Sources: freedesktop.org, Extended Window Manager Hints 1.5
// (_NET_WM_WINDOW_TYPE_DOCK); X Window System Protocol (TranslateCoordinates). One thread at a time.
#pragma once

#include <optional>

namespace tollvane {

// In the pixels of the whole desktop.
struct X11Area {
  int x = 0, y = 0, width = 0, height = 0;
};

// The window of the topmost panel at this point, with all that it reserves or does not reserve. Absent if the point is
// on no panel, or if the server that DISPLAY names does not answer within 100 ms.
std::optional<X11Area> panelAt(int x, int y);

}  // namespace tollvane
