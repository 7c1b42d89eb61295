#include "platform/linux/bell/bus_types.h"

#include <QDBusMetaType>
#include <QtEndian>
#include <utility>

namespace tollvane {

IconPixmaps iconPixmaps(const QList<QImage>& images) {
  IconPixmaps pixmaps;
  for (const QImage& image : images) {
    const QImage plain = image.convertToFormat(QImage::Format_ARGB32);
    IconPixmap pixmap{plain.width(), plain.height(), QByteArray(plain.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(plain.constBits(), plain.sizeInBytes() / qsizetype{sizeof(quint32)}, pixmap.argb.data());
    pixmaps.append(std::move(pixmap));
  }
  return pixmaps;
}

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap) {
  argument.beginStructure();
  argument << pixmap.width << pixmap.height << pixmap.argb;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap) {
  argument.beginStructure();
  argument >> pixmap.width >> pixmap.height >> pixmap.argb;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ToolTip& toolTip) {
  argument.beginStructure();
  argument << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.subtitle;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ToolTip& toolTip) {
  argument.beginStructure();
  argument >> toolTip.iconName >> toolTip.icon >> toolTip.title >> toolTip.subtitle;
  argument.endStructure();
  return argument;
}

bool DBusMenuLayout::operator==(const DBusMenuLayout& other) const {
  return id == other.id && properties == other.properties && children == other.children;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout) {
  argument.beginStructure();
  argument << layout.id << layout.properties;
  argument.beginArray(QMetaType::fromType<QDBusVariant>());
  for (const DBusMenuLayout& child : layout.children) argument << QDBusVariant(QVariant::fromValue(child));
  argument.endArray();
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout) {
  argument.beginStructure();
  argument >> layout.id >> layout.properties;
  argument.beginArray();
  layout.children.clear();
  while (!argument.atEnd()) {
    QDBusVariant child;
    argument >> child;
    layout.children.append(qdbus_cast<DBusMenuLayout>(child.variant()));
  }
  argument.endArray();
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& item) {
  argument.beginStructure();
  argument << item.id << item.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& item) {
  argument.beginStructure();
  argument >> item.id >> item.properties;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuPropertyNames& item) {
  argument.beginStructure();
  argument << item.id << item.names;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuPropertyNames& item) {
  argument.beginStructure();
  argument >> item.id >> item.names;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
  argument.beginStructure();
  argument << event.id << event.name << event.data << event.timestamp;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
  argument.beginStructure();
  argument >> event.id >> event.name >> event.data >> event.timestamp;
  argument.endStructure();
  return argument;
}

void registerBusTypes() {
  qDBusRegisterMetaType<IconPixmap>();
  qDBusRegisterMetaType<IconPixmaps>();
  qDBusRegisterMetaType<ToolTip>();
  qDBusRegisterMetaType<DBusMenuLayout>();
  qDBusRegisterMetaType<DBusMenuProperties>();
  qDBusRegisterMetaType<DBusMenuPropertiesList>();
  qDBusRegisterMetaType<DBusMenuPropertyNames>();
  qDBusRegisterMetaType<DBusMenuPropertyNamesList>();
  qDBusRegisterMetaType<DBusMenuEvent>();
  qDBusRegisterMetaType<DBusMenuEvents>();
  qDBusRegisterMetaType<DBusMenuShortcut>();
  // Qt looks up the types of a slot by the names that they have in its declaration.
  qRegisterMetaType<DBusMenuPropertiesList>("tollvane::DBusMenuPropertiesList");
  qRegisterMetaType<DBusMenuPropertyNamesList>("tollvane::DBusMenuPropertyNamesList");
  qRegisterMetaType<DBusMenuEvents>("tollvane::DBusMenuEvents");
}

}  // namespace tollvane
