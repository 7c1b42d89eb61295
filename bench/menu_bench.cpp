// Measures the menu under the bell on an X11 desktop: the time from the bar's call to the menu on the screen, and the
// memory before and after a thousand openings. Then the settings window: the time until it has been painted.
#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/desktop/menu_fixture.h"

namespace {

using namespace tollvane::test;
using Clock = std::chrono::steady_clock;

constexpr int openings = 51;

// `what` is "Pss:", or "Pss_Anon:" for memory that is not mapped from files. The former depends on how many other
// processes use the same libraries at the moment.
double inMiB(pid_t pid, std::string_view what) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
  std::string word;
  while (file >> word) {
    double kilobytes = 0;
    if (word == what && file >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

bool waitFor(MenuBell& bell, std::string_view text, int times) {
  while (bell.count(text) < times) {
    if (!bell.program().running()) return false;
  }
  return true;
}

double openOnce(MenuBell& bell, const ItemOnTheBus& item, int time) {
  const int painted = bell.count("painted\n");
  const auto start = Clock::now();
  item.invoke("Activate", {400, 10});
  if (!waitFor(bell, "painted\n", painted + 1)) return -1;
  const double milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  item.invoke("Activate", {400, 10});  // closes it
  waitFor(bell, "closed\n", time);
  return milliseconds;
}

void measure(const std::string& scenario) {
  PrivateDesktop desktop({.panel = false});
  TestBus bus(desktop);
  MenuBell bell(desktop, scenario);
  bell.tell("image bell");
  const ItemOnTheBus item(*bus, bell.service());
  std::vector<double> times;
  double first = 0;
  for (int i = 1; i <= openings; ++i) {
    const double time = openOnce(bell, item, i);
    i == 1 ? void(first = time) : times.push_back(time);
  }
  std::sort(times.begin(), times.end());
  std::printf("%s: click to menu painted, ms: first %.1f, then median %.1f, at most %.1f\n", scenario.c_str(), first,
              times[times.size() / 2], times.back());
  const pid_t pid = bell.program().pid();
  const double before = inMiB(pid, "Pss:");
  const double ownBefore = inMiB(pid, "Pss_Anon:");
  bell.tell("repeat 1000");
  const double own = inMiB(pid, "Pss_Anon:");
  std::printf("%s: PSS, MiB: %.1f before a thousand openings, %.1f after; of its own %.1f and %.1f (%+.1f %%)\n",
              scenario.c_str(), before, inMiB(pid, "Pss:"), ownBefore, own, (own / ownBefore - 1) * 100);
}

// The window is made at its first opening, so each opening has a process of its own.
void measureSettings() {
  PrivateDesktop desktop({.panel = false});
  std::vector<double> times;
  for (int i = 0; i < openings; ++i) {
    const auto probe = desktop.start({TOLLVANE_PROBES "/settings_probe", "browsers"});
    probe->writeLine("ready");
    while (probe->line(desktopPatience) != "obeyed") {
    }
    const auto start = Clock::now();
    probe->writeLine("show");
    while (probe->line(desktopPatience) != "painted") {
    }
    times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  std::sort(times.begin(), times.end());
  std::printf("settings window, first opening to painted, ms: median %.1f, at most %.1f\n", times[times.size() / 2],
              times.back());
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QCoreApplication application(argc, argv);
  for (const char* scenario : {"five", "fifty"}) measure(scenario);
  measureSettings();
  return 0;
}
