// How each installed browser stands with its extension, for the settings window. Main thread only.
#pragma once

#include <vector>

#include "browser/browser_link.h"
#include "platform/workspace.h"
#include "settings/settings_model.h"

namespace tollvane {

std::vector<BrowserRow> browserRows(const BrowserLink& link, const Workspace& workspace);

}  // namespace tollvane
