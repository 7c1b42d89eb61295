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

enum class Displays { none, ours, others };

Displays displaysOf(const ProcFs& processes, Pid pid) {
  const auto theirs = processes.environment(pid, variables);
  bool weHaveOne = false, theyHaveOne = false;
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const char* const ours = std::getenv(std::string(variables[i]).c_str());
    const std::string_view our = displayIn(ours == nullptr ? "" : ours);
    const std::string_view their = theirs[i] ? displayIn(*theirs[i]) : std::string_view();
    if (!our.empty() && our == their) return Displays::ours;
    weHaveOne = weHaveOne || !our.empty();
    theyHaveOne = theyHaveOne || !their.empty();
  }
  return weHaveOne && theyHaveOne ? Displays::others : Displays::none;
}

}  // namespace

bool isInThisDesktopSession(const ProcFs& processes, Pid pid) {
  constexpr int furthest = 16;
  // A container gives displays names of its own.
  if (!processes.hasOurRoot(pid) || displaysOf(processes, pid) != Displays::others) return true;
  // A nested display is a window of this session, from which it was started.
  auto ancestor = processes.parentPid(pid);
  for (int i = 0; i < furthest && ancestor && *ancestor > 1; ++i) {
    if (displaysOf(processes, *ancestor) == Displays::ours) return true;
    ancestor = processes.parentPid(*ancestor);
  }
  return false;
}

}  // namespace tollvane
