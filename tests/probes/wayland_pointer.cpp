// A virtual pointer for a Wayland desktop without one: wayland_pointer WIDTH HEIGHT. Obeys commands on its standard
// input, one a line; X and Y are pixels of an output of this width and height. The pointer exists while this program
// runs:
//   move X Y     press BUTTON     release BUTTON     -> "obeyed" once the compositor has taken it
// Buttons are those of linux/input-event-codes.h: 272 is the left one.
#include <wayland-client.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

namespace {

// Milliseconds between two commands on the pointer's own clock: so long that two clicks are no double click.
constexpr std::uint32_t betweenOrders = 1000;

zwlr_virtual_pointer_manager_v1* manager = nullptr;

void offered(void*, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t) {
  if (std::strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0) {
    manager = static_cast<zwlr_virtual_pointer_manager_v1*>(
        wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1));
  }
}

}  // namespace

int main(int argc, char** argv) {
  wl_display* display = wl_display_connect(nullptr);
  if (argc != 3 || display == nullptr) return 2;
  const auto width = static_cast<std::uint32_t>(std::stoul(argv[1]));
  const auto height = static_cast<std::uint32_t>(std::stoul(argv[2]));
  constexpr wl_registry_listener listener{offered, [](void*, wl_registry*, std::uint32_t) {}};
  wl_registry_add_listener(wl_display_get_registry(display), &listener, nullptr);
  wl_display_roundtrip(display);
  if (manager == nullptr) return 3;
  zwlr_virtual_pointer_v1* pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
  std::uint32_t time = 0;
  std::string command;
  std::uint32_t first = 0;
  std::cout << "ready" << std::endl;
  while (std::cin >> command >> first) {
    time += betweenOrders;
    if (command == "move") {
      std::uint32_t second = 0;
      std::cin >> second;
      zwlr_virtual_pointer_v1_motion_absolute(pointer, time, first, second, width, height);
    } else {
      zwlr_virtual_pointer_v1_button(pointer, time, first, command == "press" ? 1 : 0);
    }
    zwlr_virtual_pointer_v1_frame(pointer);
    wl_display_roundtrip(display);
    std::cout << "obeyed" << std::endl;
  }
  return 0;
}
