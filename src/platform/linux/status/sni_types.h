// The compound types of the StatusNotifierItem protocol, as QtDBus sends and receives them.
// Source: the page StatusNotifierItem of the freedesktop.org wiki.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QString>

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

// Makes the types known to QtDBus. May be called more than once.
void registerStatusNotifierTypes();

}  // namespace tollvane

Q_DECLARE_METATYPE(tollvane::IconPixmap)
Q_DECLARE_METATYPE(tollvane::ToolTip)
