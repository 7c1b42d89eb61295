// Makes the calls that a bar can make on the menu that is shown over the bus, in any order and with any numbers and
// names, while the menu changes. A layout is never deeper than was asked for, its numbers are all different, and an
// action runs only for an item that a bar could see.

#include <QCoreApplication>
#include <QDBusVariant>
#include <QSet>
#include <algorithm>
#include <cstdint>

#include "fuzz/fuzz.h"
#include "fuzz/made_up_menu.h"
#include "platform/linux/bell/dbus_menu.h"

namespace {

using namespace tollvane;

// Never destroyed: the toolkit's own statics may be gone when this program's statics end.
void needApplication() {
  static int argumentCount = 1;
  static char name[] = "menu_fuzz";
  static char* arguments[] = {name, nullptr};
  static QCoreApplication* application = nullptr;
  if (application == nullptr && QCoreApplication::instance() == nullptr)
    application = new QCoreApplication(argumentCount, arguments);
}

void check(const DBusMenuLayout& layout, int depth, QSet<int>& seen) {
  FUZZ_REQUIRE(!seen.contains(layout.id));
  seen.insert(layout.id);
  FUZZ_REQUIRE(depth != 0 || layout.children.isEmpty());
  for (const DBusMenuLayout& child : layout.children) check(child, depth - 1, seen);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  needApplication();
  Bytes bytes(data, std::min<std::size_t>(size, 4096));
  MadeUpMenu items(bytes);
  int told = 0;
  DBusMenu menu(items, [&told] { ++told; });
  while (!bytes.none()) {
    switch (bytes.next() % 9) {
      case 0: {
        DBusMenuLayout layout;
        const int parent = bytes.number();
        const int depth = bytes.number();
        if (menu.GetLayout(parent, depth, bytes.names(), layout) == 0) break;
        FUZZ_REQUIRE(layout.id == parent);
        QSet<int> seen;
        check(layout, depth, seen);
        break;
      }
      case 1:
        menu.GetGroupProperties(bytes.numbers(), bytes.names());
        break;
      case 2: {
        const int number = bytes.number();
        menu.GetProperty(number, bytes.name());
        break;
      }
      case 3: {
        const int number = bytes.number();
        menu.Event(number, bytes.name(), QDBusVariant(QString()), 0);
        break;
      }
      case 4: {
        DBusMenuEvents events;
        for (const int number : bytes.numbers()) events.append({number, bytes.name(), QDBusVariant(QString()), 0});
        FUZZ_REQUIRE(menu.EventGroup(events).size() <= events.size());
        break;
      }
      case 5:
        menu.AboutToShow(bytes.number());
        break;
      case 6: {
        QList<int> errors;
        const QList<int> numbers = bytes.numbers();
        const QList<int> changed = menu.AboutToShowGroup(numbers, errors);
        FUZZ_REQUIRE(changed.size() + errors.size() <= numbers.size());
        break;
      }
      case 7:
        menu.contentsMayHaveChanged();
        break;
      default:
        QCoreApplication::processEvents();
    }
  }
  QCoreApplication::processEvents();
  FUZZ_REQUIRE(told == items.chosen);
  return 0;
}
