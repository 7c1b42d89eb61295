#include "platform/linux/bell/old_tray_icon.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPalette>
#include <utility>

#include "platform/linux/drawing/plain_text.h"
#include "platform/linux/drawing/symbols.h"

namespace tollvane {
namespace {

// Old trays have the colours of the other windows, as far as they have any.
BarTone toneOfWindows() {
  constexpr int middle = 128;
  return QGuiApplication::palette().color(QPalette::Window).lightness() < middle ? BarTone::dark : BarTone::light;
}

QIcon iconOf(const QList<QImage>& images) {
  QIcon icon;
  for (const QImage& image : images) icon.addPixmap(QPixmap::fromImage(image));
  return icon;
}

}  // namespace

bool OldTrayIcon::isThere() {
  return QGuiApplication::platformName() == QLatin1String("xcb") && QSystemTrayIcon::isSystemTrayAvailable();
}

OldTrayIcon::OldTrayIcon(std::function<void(QPoint)> onClick) {
  QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_,
                   [onClick = std::move(onClick)](QSystemTrayIcon::ActivationReason reason) {
                     if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::Context) return;
                     if (onClick) onClick(QCursor::pos());
                   });
}

void OldTrayIcon::setImage(std::string_view symbolName) {
  icon_.setIcon(iconOf(drawIcon(iconNameForSymbol(symbolName), toneOfWindows())));
  icon_.show();  // without an image there is nothing to show
}

// The toolkit reads markup there, so nothing that looks like it may reach it.
void OldTrayIcon::setToolTip(std::string_view text) { icon_.setToolTip(QString::fromStdString(plainToolTip(text))); }

}  // namespace tollvane
