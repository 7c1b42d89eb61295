// The bell and its menu for Tollvane's own extension of GNOME Shell, which shows them in the shell's own widgets where
// nothing else shows status items. An object on the session bus, at the name of the application; only the process that
// owns the shell's name on the bus may use it. Main thread only.
//
//   com.quarnel.tollvane.Bell at /com/quarnel/tollvane/bell
//     Attach(u version) -> u        the version that Tollvane speaks; the shell goes on only if it is its own
//     Detach()                      the extension is turned off
//     State() -> s symbol, s tooltip        Changed        signal: ask again        ShowMenu        signal: open it
//     Menu() -> s        JSON; see shell_menu.h
//     Choose(i number, s token)
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QString>
#include <functional>
#include <string>

#include "platform/linux/bell/exported_menu.h"
#include "platform/linux/bell/shell_menu.h"
#include "platform/status_item.h"

namespace tollvane {

class ShellBell : public QObject, public StatusItem, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quarnel.tollvane.Bell")

 public:
  static constexpr const char* objectPath = "/com/quarnel/tollvane/bell";
  static constexpr uint version = 1;

  explicit ShellBell(QDBusConnection bus);
  ~ShellBell() override;

  // Opens the menu in the shell, or closes it. False if the shell has no extension of ours.
  bool showMenu();

  // Whether the shell that runs now has the extension, and has said so.
  bool isAttached() const;

  // Called before an item's action. `activationToken`: for the user's choice; empty if the shell gives none.
  std::function<void(const std::string& activationToken)> onChoice;

  void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override;
  void setToolTip(std::string_view text) override;
  void setMenu(MenuDelegate& delegate) override;

  // NOLINTBEGIN(readability-identifier-naming): names on the bus
 public Q_SLOTS:
  Q_SCRIPTABLE uint Attach(uint theirs);
  Q_SCRIPTABLE void Detach();
  Q_SCRIPTABLE QString State(QString& toolTip);
  Q_SCRIPTABLE QString Menu();
  Q_SCRIPTABLE void Choose(int number, const QString& token);

 Q_SIGNALS:
  Q_SCRIPTABLE void Changed();
  Q_SCRIPTABLE void ShowMenu();
  // NOLINTEND(readability-identifier-naming)

 private:
  QString shell() const;
  bool isShell();

  QDBusConnection bus_;
  MenuDelegate* delegate_ = nullptr;
  QString symbol_, toolTip_;
  QString attached_;  // the unique name of the shell that has attached itself
  MenuNumbers numbers_;
  ShellMenu shown_;  // what was asked for last
};

}  // namespace tollvane
