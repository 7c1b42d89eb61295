// The settings that an X11 desktop (Xfce, MATE, Cinnamon, GNOME) shares with all programs. One thread at a time.
// Source: freedesktop.org, XSETTINGS 0.5.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/x11/x11_connection.h"

namespace tollvane {

// As the desktop has set them, in any bytes; empty if it has not.
struct XSettings {
  std::string fontName;   // as Pango writes it: "Cantarell Bold 11"
  std::string themeName;  // of the toolkit that the desktop is made with: "Adwaita-dark"

  bool operator==(const XSettings&) const = default;
};

// Reads the property of the settings' manager. What is cut off or of an unknown kind ends the list.
XSettings parseXSettings(std::string_view bytes);

// Follows the desktop's manager of these settings. Makes no connection if there is no X server.
class XSettingsWatch {
 public:
  // What is set now; absent if no manager exists, or if the server does not answer within 100 ms.
  std::optional<XSettings> read();

  // Becomes readable when something may have changed; -1 without a connection.
  int descriptor() const;

  // Takes what has arrived. False if it was nothing that matters.
  bool takeChanges();

  // False once the server is gone; then there is nothing more to wait for.
  bool isAlive() const { return x11_.isAlive(); }

 private:
  bool findAtoms();

  X11Connection x11_;
  xcb_atom_t selection_ = XCB_ATOM_NONE, property_ = XCB_ATOM_NONE, manager_ = XCB_ATOM_NONE;
};

}  // namespace tollvane
