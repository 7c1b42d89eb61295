// The bell by itself, for tests: bell_probe ICON_THEME_PATH.
// Obeys commands on its standard input, one a line, and prints what the user does with the item.
//   image SYMBOL DESCRIPTION...   tooltip TEXT...   another-item   quit
//   -> "obeyed" after each line
#include <QGuiApplication>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/bell/linux_status_bar.h"
#include "tests/probes/probe_lines.h"

namespace {

using tollvane::StatusItem;

class Probe {
 public:
  explicit Probe(const char* iconThemePath) : bar_(iconThemePath) { items_.push_back(bar_.makeStatusItem()); }

  void read(const std::string& line) {
    obey(line);
    tollvane::test::say("obeyed");
  }

 private:
  void obey(std::string_view line) {
    const auto [command, rest] = split(line);
    StatusItem& item = *items_.front();
    if (command == "image") {
      const auto [symbol, description] = split(rest);
      item.setImage(symbol, description);
    } else if (command == "tooltip") {
      item.setToolTip(rest);
    } else if (command == "another-item") {
      items_.push_back(bar_.makeStatusItem());
    } else if (command == "quit") {
      QCoreApplication::quit();
    }
  }

  static std::pair<std::string_view, std::string_view> split(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos ? std::pair(text, std::string_view())
                                           : std::pair(text.substr(0, blank), text.substr(blank + 1));
  }

  tollvane::LinuxStatusBar bar_;
  std::vector<std::unique_ptr<StatusItem>> items_;
};

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  if (argc != 2) {
    std::fputs("usage: bell_probe ICON_THEME_PATH\n", stderr);
    return 2;
  }
  Probe probe(argv[1]);
  const tollvane::test::ProbeLines lines([&probe](const std::string& line) { probe.read(line); });
  return application.exec();
}
