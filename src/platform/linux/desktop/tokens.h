// The permission to come forward that a click of the user gives: a text that the window system hands out, and wants to
// see before it lets another window come to the front. Empty where there is none.
// Source: freedesktop.org, Startup Notification 0.2; Wayland, xdg-activation-v1.
#pragma once

#include <functional>
#include <string>

namespace tollvane {

// Answers with the token of the last click, which is good for one use.
using TokenSource = std::function<std::string()>;

}  // namespace tollvane
