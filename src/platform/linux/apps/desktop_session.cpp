#include "platform/linux/apps/desktop_session.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "platform/linux/kernel/program_line.h"

namespace tollvane {
namespace {

// ":0.1" is a screen of the display ":0", see X(7).
std::string_view withoutScreen(std::string_view display) {
  const auto dot = display.find('.', display.find_last_of(':') + 1);
  return display.substr(0, dot);
}

struct Variable {
  std::string_view name;
  std::string_view (*display)(std::string_view value);
};

constexpr std::array<Variable, 2> variables{{
    {"DISPLAY", withoutScreen}, {"WAYLAND_DISPLAY", lastComponent},  // a name or a path
}};

}  // namespace

bool isInThisDesktopSession(const ProcFs& processes, Pid pid) {
  // A container gives displays names of its own.
  if (!processes.hasOurRoot(pid)) return true;
  const std::array names{variables[0].name, variables[1].name};
  const auto theirs = processes.environment(pid, names);
  bool weHaveOne = false, theyHaveOne = false;
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const char* const variable = std::getenv(names[i].data());
    const std::string_view our = variables[i].display(variable == nullptr ? "" : variable);
    const std::string_view their = theirs[i] ? variables[i].display(*theirs[i]) : std::string_view();
    if (!our.empty() && our == their) return true;
    weHaveOne = weHaveOne || !our.empty();
    theyHaveOne = theyHaveOne || !their.empty();
  }
  return !weHaveOne || !theyHaveOne;
}

}  // namespace tollvane
