// What the user reads who asked for updates. Pure.
#pragma once

#include "platform/alerts.h"
#include "update/updater.h"

namespace tollvane {

// How long after the question the answer is given, whatever has become known by then.
inline constexpr std::chrono::seconds updateAnswerDelay{4};

Alert updateAlert(const Updater& updater);

}  // namespace tollvane
