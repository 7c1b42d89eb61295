#include "platform/linux/bell/shell_bell.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <utility>

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
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
  shown_ = ShellMenu(menu, numbers_);
  return shown_.text();
}

void ShellBell::Choose(int number, const QString& token) {
  if (!isShell()) return;
  const MenuItem* found = shown_.item(number);
  if (found == nullptr || !found->isEnabled || !found->action) return;
  // From the event loop, so that the shell does not wait for what the action does.
  QMetaObject::invokeMethod(
      this,
      [this, item = *found, token = token.toStdString()] {
        if (onChoice) onChoice(token);
        item.action(item);
      },
      Qt::QueuedConnection);
}

}  // namespace tollvane
