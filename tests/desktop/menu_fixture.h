// What the tests of the menu share: the bell and its menu, as a program. One thread, which has a QCoreApplication.
#pragma once

#include <QRect>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/desktop/bell_fixture.h"

namespace tollvane::test {

class MenuBell {
 public:
  MenuBell(PrivateDesktop& desktop, const std::string& scenario, const Variables& extra = {})
      : program_(desktop.start({TOLLVANE_PROBES "/menu_probe", TOLLVANE_BUNDLE "/icons", scenario}, extra)) {}

  void tell(std::string_view line) {
    const int before = count("obeyed\n");
    program_->writeLine(line);
    if (!waitUntilOnTheBus([&] { return count("obeyed\n") > before; })) {
      throw std::runtime_error("the bell does not obey: " + std::string(line));
    }
  }

  bool prints(std::string_view text, int times = 1) {
    return waitUntilOnTheBus([&] { return count(text) >= times; });
  }

  int count(std::string_view text) {
    int found = 0;
    for (std::size_t at = 0; (at = program_->printed().find(text, at)) != std::string::npos; at += text.size()) ++found;
    return found;
  }

  // The place of the menu that opened last.
  QRect place(std::string_view event = "\nopened ") {
    const std::string printed = '\n' + program_->printed();
    const std::size_t at = printed.rfind(event);
    if (at == std::string::npos) return {};
    std::istringstream numbers(printed.substr(at + event.size()));
    int x = 0, y = 0, width = 0, height = 0;
    numbers >> x >> y >> width >> height;
    return {x, y, width, height};
  }

  Process& program() { return *program_; }
  QString service() const { return QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(program_->pid()); }

 private:
  std::unique_ptr<Process> program_;
};

}  // namespace tollvane::test
