#include "platform/linux/bell/shell_bell.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QJsonArray>
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
  if (item.attributedTitle.empty())
    line.append(QJsonObject{{QStringLiteral("text"), plainLine(item.title)},
                            {QStringLiteral("color"), QStringLiteral("label")}});
  lines.append(line);
  return lines;
}

}  // namespace

ShellBell::ShellBell(QDBusConnection bus) : bus_(std::move(bus)) {
  if (!bus_.isConnected()) return;
  bus_.registerObject(QLatin1String(objectPath), this,
                      QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals);
}

ShellBell::~ShellBell() {
  if (bus_.isConnected()) bus_.unregisterObject(QLatin1String(objectPath));
}

QString ShellBell::shell() const {
  return bus_.isConnected() ? bus_.interface()->serviceOwner(QStringLiteral("org.gnome.Shell")).value() : QString();
}

bool ShellBell::isAttached() const { return !attached_.isEmpty() && attached_ == shell(); }

bool ShellBell::showMenu() {
  if (!isAttached()) return false;
  Q_EMIT ShowMenu();
  return true;
}

bool ShellBell::isShell() {
  if (!calledFromDBus()) return false;
  if (message().service() == shell()) return true;
  sendErrorReply(QDBusError::AccessDenied, QStringLiteral("This is for the desktop's shell only."));
  return false;
}

void ShellBell::setImage(std::string_view symbolName, std::string_view) {
  const QString symbol = plainLine(symbolName);
  if (symbol != std::exchange(symbol_, symbol)) Q_EMIT Changed();
}

void ShellBell::setToolTip(std::string_view text) {
  const QString toolTip = QString::fromStdString(plainToolTip(text));
  if (toolTip != std::exchange(toolTip_, toolTip)) Q_EMIT Changed();
}

void ShellBell::setMenu(MenuDelegate& delegate) { delegate_ = &delegate; }

uint ShellBell::Attach(uint theirs) {
  if (isShell() && theirs == version) attached_ = message().service();
  return version;
}

void ShellBell::Detach() {
  if (isShell()) attached_.clear();
}

QString ShellBell::State(QString& toolTip) {
  if (!isShell()) return {};
  toolTip = toolTip_;
  return symbol_;
}

QString ShellBell::Menu() {
  if (!isShell() || delegate_ == nullptr) return {};
  tollvane::Menu menu;
  delegate_->menuNeedsUpdate(menu);
  items_.clear();
  numbers_.beginMenu();
  const std::function<QJsonArray(const std::vector<MenuItem>&)> listOf = [&](const std::vector<MenuItem>& items) {
    QJsonArray list;
    for (const MenuItem& item : items) {
      const int number = numbers_.numberOf(item.identifier);
      QJsonObject made{{QStringLiteral("id"), number}};
      if (item.isSeparator) {
        made.insert(QStringLiteral("separator"), true);
      } else {
        made.insert(QStringLiteral("name"), plainLabel(item));
        made.insert(QStringLiteral("enabled"), item.isEnabled);
        made.insert(QStringLiteral("lines"), linesOf(item));
        if (!item.toolTip.empty()) made.insert(QStringLiteral("toolTip"), plainLine(item.toolTip));
        if (!item.keyEquivalent.empty()) made.insert(QStringLiteral("key"), plainLine(item.keyEquivalent));
        if (!item.submenu.empty()) made.insert(QStringLiteral("items"), listOf(item.submenu));
      }
      items_.insert_or_assign(number, item);
      list.append(made);
    }
    return list;
  };
  const QJsonArray list = listOf(menu.items);
  numbers_.endMenu();
  return QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

void ShellBell::Choose(int number, const QString& token) {
  if (!isShell()) return;
  const auto found = items_.find(number);
  if (found == items_.end() || !found->second.isEnabled || !found->second.action) return;
  // From the event loop, so that the shell does not wait for what the action does.
  QMetaObject::invokeMethod(
      this,
      [this, item = found->second, token = token.toStdString()] {
        if (onChoice) onChoice(token);
        item.action(item);
      },
      Qt::QueuedConnection);
}

}  // namespace tollvane
