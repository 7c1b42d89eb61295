// The buttons of an alert. Pure; any thread.
#pragma once

#include <cstddef>

namespace tollvane {

// The index of the button for the answer of NSAlert: the first button answers `first`, each other one more than the
// button before it. Whatever else ends the alert counts as its last button.
constexpr std::size_t chosenButton(long answer, long first, std::size_t count) {
  const bool isButton = answer >= first && answer - first < static_cast<long>(count);
  if (isButton) return static_cast<std::size_t>(answer - first);
  return count == 0 ? 0 : count - 1;
}

// The system gives Return to the first button, and Escape only to one that is called "Cancel". A button has one key,
// so the only button of an alert keeps Return.
constexpr bool takesEscape(std::size_t index, std::size_t count) { return count > 1 && index + 1 == count; }

}  // namespace tollvane
