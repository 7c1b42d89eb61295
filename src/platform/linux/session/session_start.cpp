#include "platform/linux/session/session_start.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QLibraryInfo>
#include <QVersionNumber>
#include <cstdlib>

#include "platform/linux/session/autostart_login.h"

namespace tollvane {
namespace {

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

bool hasDesktop() { return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM"); }

DisplayChoice::DisplayChoice() {
  // The bell needs only the bus. If Qt's plugin for this kind of display is not installed, the bell is shown without
  // it.
  choose("QT_QPA_PLATFORM", isSet("WAYLAND_DISPLAY") ? "wayland;xcb;offscreen" : "xcb;offscreen");
  // A menu and a few windows do not need a graphics driver, which is larger than all of Tollvane. But older versions of
  // Qt draw no title bar without one, and GNOME draws none. This stays in the environment, because Qt reads it only at
  // the first window; GioLauncher keeps it from the programs that it starts.
  const bool isTitleBarOurs = qgetenv("XDG_CURRENT_DESKTOP").split(':').contains("GNOME");
  const bool drawsIt = QLibraryInfo::version() >= QVersionNumber(6, 8);
  constexpr auto driver = "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION";
  if (!isSet(driver) && (drawsIt || !isTitleBarOurs)) qputenv(driver, "none");
}

DisplayChoice::~DisplayChoice() {
  for (const char* name : chosen_) qunsetenv(name);
}

void DisplayChoice::choose(const char* name, const char* value) {
  if (isSet(name)) return;
  qputenv(name, value);
  chosen_.push_back(name);
}

StartNotice::StartNotice()
    : atLogin_(qgetenv(startedAtLogin) == "1"),
      token_((isSet("XDG_ACTIVATION_TOKEN") ? qgetenv("XDG_ACTIVATION_TOKEN") : qgetenv("DESKTOP_STARTUP_ID"))
                 .toStdString()) {
  // DESKTOP_STARTUP_ID stays, because the toolkit itself takes it on X11.
  for (const char* name : {startedAtLogin, "XDG_ACTIVATION_TOKEN"}) qunsetenv(name);
}

}  // namespace tollvane
