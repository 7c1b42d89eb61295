// Makes the calls that a bar can make on the menu that is shown over the bus, in any order and with any numbers and
// names, while the menu changes. A layout is never deeper than was asked for, its numbers are all different, and an
// action runs only for an item that a bar could see.

#include <QCoreApplication>
#include <QDBusVariant>
#include <QSet>
#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/fuzz.h"
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

// Gives out the bytes of the input, and zeros after them.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool none() const { return at_ >= size_; }
  int next() { return none() ? 0 : data_[at_++]; }
  // Mostly a small number, as items have.
  int number() {
    const int first = next();
    return first < 250 ? first - 3
                       : static_cast<int>(static_cast<unsigned>(next()) << 24 | static_cast<unsigned>(next()));
  }
  QList<int> numbers() {
    QList<int> all;
    for (int count = next() % 8; count > 0; --count) all.append(number());
    return all;
  }
  QString name() {
    static const char* const known[] = {"clicked", "opened",  "closed", "hovered",
                                        "label",   "enabled", "type",   "visible"};
    const int first = next();
    if (first < 200) return QString::fromLatin1(known[first % 8]);
    QByteArray bytes;
    for (int count = first - 200; count > 0; --count) bytes.append(static_cast<char>(next()));
    return QString::fromUtf8(bytes);
  }
  QStringList names() {
    QStringList all;
    for (int count = next() % 4; count > 0; --count) all.append(name());
    return all;
  }
  std::string text() { return name().toStdString(); }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

class Items : public MenuDelegate {
 public:
  explicit Items(Bytes& bytes) : bytes_(bytes) {}

  void menuNeedsUpdate(Menu& menu) override {
    for (int count = bytes_.next() % 8; count > 0; --count) menu.items.push_back(item(0));
  }

  int chosen = 0;

 private:
  MenuItem item(int level) {
    MenuItem made;
    const int kind = bytes_.next();
    made.identifier = std::string(1, static_cast<char>('a' + kind % 5));
    made.title = bytes_.text();
    made.isSeparator = kind % 7 == 0;
    made.isEnabled = kind % 3 != 0;
    if (kind % 2 == 0)
      made.action = [this](const MenuItem& sender) {
        FUZZ_REQUIRE(sender.isEnabled);
        ++chosen;
      };
    if (level < 2 && kind % 5 == 0)
      for (int count = bytes_.next() % 4; count > 0; --count) made.submenu.push_back(item(level + 1));
    return made;
  }

  Bytes& bytes_;
};

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
  Items items(bytes);
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
