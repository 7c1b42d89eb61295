// What runs on the user's X11 desktop besides applications. Sources: freedesktop.org, Extended Window Manager Hints 1.5
// (_NET_SUPPORTING_WM_CHECK) and System Tray 0.3. One thread at a time.
#pragma once

namespace tollvane {

struct X11Desktop {
  bool hasWindowManager = false;
  bool hasTray = false;

  // Nothing runs there if the server that DISPLAY names does not answer within half a second.
  static X11Desktop find();
};

}  // namespace tollvane
