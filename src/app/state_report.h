// What the running Tollvane says about itself to another start of the program, which asks for the doctor: one JSON
// object. Nothing private is in it. Main thread only.
#pragma once

#include <string>
#include <string_view>

#include "browser/browser_link.h"
#include "detect/watcher.h"
#include "platform/clock.h"

namespace tollvane {

std::string stateReport(std::string_view version, Hearing hearing, const BrowserLink& link, const DateFormatter& dates);

}  // namespace tollvane
