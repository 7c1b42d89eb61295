#include "update/update_alert.h"

namespace tollvane {

Alert updateAlert(const Updater& updater) {
  if (const auto release = updater.available())
    return {"Version " + release->version + " is available",
            "Choose \"Update available\" in the Tollvane menu to get it."};
  if (updater.latest) return {"You're up to date", "Tollvane " + updater.current() + " is the newest version."};
  return {"Couldn't check for updates",
          "The website didn't answer. Check your internet connection and try again later."};
}

}  // namespace tollvane
