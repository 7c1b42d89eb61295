// Makes menus up and writes them for the extension of GNOME Shell. Whatever the items' texts are, the result is JSON of
// the form that the extension reads, each text is one line without control characters, and each number stands for one
// item.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/fuzz.h"
#include "fuzz/made_up_menu.h"
#include "platform/linux/bell/shell_menu.h"

namespace {

using namespace tollvane;

void checkText(const QJsonValue& value) {
  FUZZ_REQUIRE(value.isString());
  const QString text = value.toString();
  for (const QChar c : text) FUZZ_REQUIRE(c.category() != QChar::Other_Control && c != u'\u2028' && c != u'\u2029');
}

void check(const QJsonArray& list, const std::vector<MenuItem>& items, const ShellMenu& menu, QSet<int>& seen) {
  FUZZ_REQUIRE(static_cast<std::size_t>(list.size()) == items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const QJsonObject item = list[static_cast<qsizetype>(i)].toObject();
    const int number = item[QLatin1String("id")].toInt(-1);
    FUZZ_REQUIRE(number > 0 && !seen.contains(number));
    seen.insert(number);
    FUZZ_REQUIRE(menu.item(number) != nullptr && menu.item(number)->identifier == items[i].identifier);
    FUZZ_REQUIRE(item[QLatin1String("separator")].toBool() == items[i].isSeparator);
    if (items[i].isSeparator) continue;
    checkText(item[QLatin1String("name")]);
    FUZZ_REQUIRE(item[QLatin1String("enabled")].toBool() == items[i].isEnabled);
    const QJsonArray lines = item[QLatin1String("lines")].toArray();
    FUZZ_REQUIRE(!lines.isEmpty());
    for (const QJsonValue line : lines)
      for (const QJsonValue run : line.toArray()) checkText(run[QLatin1String("text")]);
    check(item[QLatin1String("items")].toArray(), items[i].submenu, menu, seen);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, std::min<std::size_t>(size, 4096));
  MadeUpMenu source(bytes);
  MenuNumbers numbers;
  while (!bytes.none()) {
    Menu menu;
    source.menuNeedsUpdate(menu);
    const ShellMenu shown(menu, numbers);
    const QJsonDocument text = QJsonDocument::fromJson(shown.text().toUtf8());
    FUZZ_REQUIRE(text.isArray());
    QSet<int> seen;
    check(text.array(), menu.items, shown, seen);
    const int any = bytes.number();
    FUZZ_REQUIRE((shown.item(any) != nullptr) == seen.contains(any));
  }
  return 0;
}
