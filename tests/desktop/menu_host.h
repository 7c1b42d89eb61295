// Stands in for a bar that draws the menu itself: it asks for the menu over the bus, and draws nothing.
#pragma once

#include <gtest/gtest.h>

#include "platform/linux/bell/dbus_menu.h"
#include "tests/desktop/menu_fixture.h"

namespace tollvane::test {

class MenuHost : public QObject {
  Q_OBJECT

 public:
  MenuHost(QDBusConnection bus, QString service) : bus_(std::move(bus)), service_(std::move(service)) {
    registerBusTypes();
    bus_.connect(service_, path(), interface(), QStringLiteral("LayoutUpdated"), this, SLOT(layoutUpdated(uint, int)));
    bus_.connect(service_, path(), interface(), QStringLiteral("ItemsPropertiesUpdated"), this,
                 SLOT(propertiesUpdated(tollvane::DBusMenuPropertiesList, tollvane::DBusMenuPropertyNamesList)));
  }

  QDBusMessage call(const char* method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(service_, path(), interface(), QString::fromLatin1(method));
    message.setArguments(arguments);
    return bus_.call(message, QDBus::Block, 5000);
  }

  DBusMenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
    const QDBusMessage reply = call("GetLayout", {parent, depth, names});
    revision = reply.arguments().value(0).toUInt();
    return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
  }

  bool aboutToShow(int id = 0) const { return call("AboutToShow", {id}).arguments().value(0).toBool(); }

  QDBusMessage sendEvent(int id, const char* name, uint time = 0) const {
    return call("Event", {id, QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(QString())), time});
  }

  // The first item, at any level, whose label contains `label`; null if there is no such item.
  static const DBusMenuLayout* find(const DBusMenuLayout& layout, const QString& label) {
    if (layout.properties.value(QStringLiteral("label")).toString().contains(label)) return &layout;
    for (const DBusMenuLayout& child : layout.children) {
      if (const DBusMenuLayout* found = find(child, label)) return found;
    }
    return nullptr;
  }

  // Reads the menu as some bars do: the properties of items that were read before are not read again.
  void readNewItems() { keepNew(layout()); }

  int updates = 0;
  uint revision = 0;
  QMap<int, QVariantMap> kept;  // the properties of the items, by their numbers

 private Q_SLOTS:
  void layoutUpdated(uint newRevision, int) {
    EXPECT_GT(newRevision, revision);
    revision = newRevision;
    ++updates;
  }
  void propertiesUpdated(const tollvane::DBusMenuPropertiesList& updated,
                         const tollvane::DBusMenuPropertyNamesList& removed) {
    for (const DBusMenuProperties& item : updated) kept[item.id].insert(item.properties);
    for (const DBusMenuPropertyNames& item : removed) {
      for (const QString& name : item.names) kept[item.id].remove(name);
    }
  }

 private:
  void keepNew(const DBusMenuLayout& item) {
    if (!kept.contains(item.id)) kept.insert(item.id, item.properties);
    for (const DBusMenuLayout& child : item.children) keepNew(child);
  }
  static QString path() { return QString::fromLatin1(DBusMenu::objectPath); }
  static QString interface() { return QStringLiteral("com.canonical.dbusmenu"); }

  QDBusConnection bus_;
  QString service_;
};

}  // namespace tollvane::test
