// The menu of a status item for bars that draw menus themselves: the properties, methods and signals of the
// com.canonical.dbusmenu protocol. It is made anew whenever a bar says that it is about to show it, and never from then
// on until it is closed, an item is chosen, or time has passed. Main thread only. Source: com.canonical.dbusmenu.xml of
// libdbusmenu.
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>

#include "platform/linux/bell/bus_types.h"
#include "platform/linux/bell/exported_menu.h"
#include "platform/menu.h"

namespace tollvane {

class DBusMenu : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")

  Q_PROPERTY(uint Version READ version)
  Q_PROPERTY(QString TextDirection READ textDirection)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

 public:
  static constexpr const char* objectPath = "/StatusNotifierItem/Menu";

  // `onChoice` is called right before the action of the chosen item.
  DBusMenu(MenuDelegate& delegate, std::function<void()> onChoice);

  // Some bars never call AboutToShow. After a bar has fetched the menu once, it is sent every change.
  void contentsMayHaveChanged();

  uint version() const { return 3; }
  QString textDirection() const { return QStringLiteral("ltr"); }
  QString status() const { return QStringLiteral("normal"); }
  QStringList iconThemePath() const { return {}; }

  // NOLINTBEGIN(readability-identifier-naming): the protocol's names
 public Q_SLOTS:
  // The bar calls these.
  uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, tollvane::DBusMenuLayout& layout);
  tollvane::DBusMenuPropertiesList GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
  QDBusVariant GetProperty(int id, const QString& name);
  void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  QList<int> EventGroup(const tollvane::DBusMenuEvents& events);
  bool AboutToShow(int id);
  QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 Q_SIGNALS:
  void ItemsPropertiesUpdated(const tollvane::DBusMenuPropertiesList& updated,
                              const tollvane::DBusMenuPropertyNamesList& removed);
  void LayoutUpdated(uint revision, int parent);
  void ItemActivationRequested(int id, uint timestamp);

  // NOLINTEND(readability-identifier-naming)

 private:
  void refuse(int id);
  bool knows(int id) const { return shown_.find(id) != nullptr || before_.item(id) != nullptr; }
  bool obey(int id, const QString& eventId);
  void choose(int id);
  bool rebuild();
  void setOpen(std::chrono::seconds longest);
  void setClosed();

  MenuDelegate& delegate_;
  std::function<void()> onChoice_;
  MenuNumbers numbers_;
  ExportedMenu shown_;
  ExportedMenu before_;  // the menu before `shown_`, because a click on it may still be on its way
  uint revision_ = 0;    // 0 until a bar has asked for the menu
  bool open_ = false;
  QTimer openTooLong_;
  QTimer change_;
};

}  // namespace tollvane
