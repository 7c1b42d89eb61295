#include "platform/linux/bell/shell_menu.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
namespace {

QJsonObject runOf(const TextRun& run) {
  QString style;
  if (run.font.weight == FontWeight::semibold) style = QStringLiteral("bold");
  if (run.font.family == FontFamily::monospacedDigits) style = QStringLiteral("time");
  if (run.font.size < menuFontSize) style = QStringLiteral("small");
  QString color = QStringLiteral("label");
  if (run.color == TextColor::secondaryLabel) color = QStringLiteral("secondary");
  if (run.color == TextColor::tertiaryLabel) color = QStringLiteral("faint");
  if (run.color == TextColor::controlAccent) color = QStringLiteral("accent");
  return {{QStringLiteral("text"), plainLine(run.text).trimmed()},
          {QStringLiteral("style"), style},
          {QStringLiteral("color"), color}};
}

// One line or two. A run of blanks in the place of a time is a column of its own.
QJsonArray linesOf(const MenuItem& item) {
  QJsonArray lines;
  QJsonArray line;
  for (const TextRun& run : item.attributedTitle) {
    if (beginsLine(run)) lines.append(std::exchange(line, {}));
    QJsonObject made = runOf(run);
    const bool isEmpty = made.value(QLatin1String("text")).toString().isEmpty();
    if (isEmpty && run.font.family != FontFamily::monospacedDigits) continue;
    if (isEmpty) made.insert(QStringLiteral("style"), QStringLiteral("indent"));
    line.append(made);
  }
  if (item.attributedTitle.empty()) {
    line.append(QJsonObject{{QStringLiteral("text"), plainLine(item.title)},
                            {QStringLiteral("color"), QStringLiteral("label")}});
  }
  lines.append(line);
  return lines;
}

QJsonObject fieldsOf(const MenuItem& item) {
  if (item.isSeparator) return {{QStringLiteral("separator"), true}};
  QJsonObject fields{{QStringLiteral("name"), plainLabel(item)},
                     {QStringLiteral("enabled"), item.isEnabled},
                     {QStringLiteral("lines"), linesOf(item)}};
  if (!item.toolTip.empty()) fields.insert(QStringLiteral("toolTip"), plainLine(item.toolTip));
  if (!item.keyEquivalent.empty()) fields.insert(QStringLiteral("key"), plainLine(item.keyEquivalent));
  return fields;
}

}  // namespace

ShellMenu::ShellMenu(const Menu& menu, MenuNumbers& numbers) {
  numbers.beginMenu();
  list_ = listOf(menu.items, numbers);
  numbers.endMenu();
}

QString ShellMenu::text() const { return QString::fromUtf8(QJsonDocument(list_).toJson(QJsonDocument::Compact)); }

const MenuItem* ShellMenu::item(int number) const {
  const auto found = items_.find(number);
  return found == items_.end() ? nullptr : &found->second;
}

QJsonArray ShellMenu::listOf(const std::vector<MenuItem>& items, MenuNumbers& numbers) {
  QJsonArray list;
  for (const MenuItem& item : items) {
    const int number = numbers.numberOf(item.identifier);
    QJsonObject fields = fieldsOf(item);
    fields.insert(QStringLiteral("id"), number);
    if (!item.isSeparator && !item.submenu.empty())
      fields.insert(QStringLiteral("items"), listOf(item.submenu, numbers));
    items_.insert_or_assign(number, item);
    list.append(fields);
  }
  return list;
}

}  // namespace tollvane
