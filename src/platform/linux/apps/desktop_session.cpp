#include "platform/linux/apps/desktop_session.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/linux/kernel/program_line.h"

namespace tollvane {
namespace {

constexpr std::array<std::string_view, 2> variables{"DISPLAY", "WAYLAND_DISPLAY"};

// ":0.1" is a screen of the display ":0", see X(7). A display of Wayland is a name or a path.
std::string_view displayIn(std::string_view value) {
  const std::string_view name = lastComponent(value);
  const auto colon = name.find_last_of(':');
  return colon == std::string_view::npos ? name : name.substr(0, name.find('.', colon));
}

}  // namespace

bool isInThisDesktopSession(const ProcFs& processes, Pid pid) {
  // A container gives displays names of its own.
  if (!processes.hasOurRoot(pid)) return true;
  const auto theirs = processes.environment(pid, variables);
  bool weHaveOne = false, theyHaveOne = false;
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const char* const ours = std::getenv(std::string(variables[i]).c_str());
    const std::string_view our = displayIn(ours == nullptr ? "" : ours);
    const std::string_view their = theirs[i] ? displayIn(*theirs[i]) : std::string_view();
    if (!our.empty() && our == their) return true;
    weHaveOne = weHaveOne || !our.empty();
    theyHaveOne = theyHaveOne || !their.empty();
  }
  return !weHaveOne || !theyHaveOne;
}

}  // namespace tollvane
