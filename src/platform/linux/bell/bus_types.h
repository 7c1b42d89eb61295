// The compound types of the StatusNotifierItem and com.canonical.dbusmenu protocols, as QtDBus sends and receives them.
// Sources: the page StatusNotifierItem of the freedesktop.org wiki; com.canonical.dbusmenu.xml of libdbusmenu.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace tollvane {

// One image, D-Bus type (iiay).
struct IconPixmap {
  int width = 0;
  int height = 0;
  QByteArray argb;  // 32 bits a pixel, not premultiplied, most significant byte first: A R G B

  bool operator==(const IconPixmap&) const = default;
};

// The same image in several sizes, D-Bus type a(iiay).
using IconPixmaps = QList<IconPixmap>;

IconPixmaps iconPixmaps(const QList<QImage>& images);

// D-Bus type (sa(iiay)ss).
struct ToolTip {
  QString iconName;
  IconPixmaps icon;
  QString title;
  QString subtitle;
};

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const ToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, ToolTip& toolTip);

// An item and what is below it, D-Bus type (ia{sv}av).
struct DBusMenuLayout {
  int id = 0;
  QVariantMap properties;  // only those that differ from the protocol's defaults
  QList<DBusMenuLayout> children;

  bool operator==(const DBusMenuLayout& other) const;
};

// D-Bus type (ia{sv}).
struct DBusMenuProperties {
  int id = 0;
  QVariantMap properties;
};
using DBusMenuPropertiesList = QList<DBusMenuProperties>;

// D-Bus type (ias).
struct DBusMenuPropertyNames {
  int id = 0;
  QStringList names;
};
using DBusMenuPropertyNamesList = QList<DBusMenuPropertyNames>;

// D-Bus type (isvu).
struct DBusMenuEvent {
  int id = 0;
  QString name;
  QDBusVariant data;
  uint timestamp = 0;
};
using DBusMenuEvents = QList<DBusMenuEvent>;

// One key combination is a list of modifiers and a key; a shortcut is a list of those. D-Bus type aas.
using DBusMenuShortcut = QList<QStringList>;

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& item);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuPropertyNames& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuPropertyNames& item);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event);

// Makes the types known to QtDBus. May be called more than once.
void registerBusTypes();

}  // namespace tollvane

Q_DECLARE_METATYPE(tollvane::IconPixmap)
Q_DECLARE_METATYPE(tollvane::ToolTip)
Q_DECLARE_METATYPE(tollvane::DBusMenuLayout)
Q_DECLARE_METATYPE(tollvane::DBusMenuProperties)
Q_DECLARE_METATYPE(tollvane::DBusMenuPropertyNames)
Q_DECLARE_METATYPE(tollvane::DBusMenuEvent)
