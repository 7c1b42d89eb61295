// The end of the process, for what must never happen. Any thread.
#pragma once

#include <string_view>

namespace tollvane {

// Prints "Tollvane: " and `sentence` to standard error and aborts.
[[noreturn]] void fatal(std::string_view sentence);

}  // namespace tollvane
