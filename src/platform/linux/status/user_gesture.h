// What the window system wants to see before it lets a window come forward: that the user has just asked for it.
#pragma once

#include <cstdint>
#include <string>

namespace tollvane {

struct UserGesture {
  std::string activationToken;  // empty where the bar and the window system gave none
  std::uint32_t timestamp = 0;  // of the click, in the X server's time; 0 where nobody told
};

}  // namespace tollvane
