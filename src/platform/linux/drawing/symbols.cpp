#include "platform/linux/drawing/symbols.h"

#include <QColor>
#include <QFile>
#include <QImage>
#include <QPainter>

#include "platform/linux/drawing/symbol_path.h"

// This is outside of all namespaces, because the resource's initialiser is. The linker drops the resources of a static
// library unless something asks for them.
static void loadSymbolResources() { Q_INIT_RESOURCE(tollvane_icons); }

namespace tollvane {
namespace {

struct Symbol {
  std::string_view name;
  const char* iconName;
};

constexpr Symbol symbols[] = {
    {"bell", "tollvane-bell-symbolic"},
    {"bell.fill", "tollvane-bell-fill-symbolic"},
    {"checkmark.circle.fill", "tollvane-checkmark-circle-fill-symbolic"},
};

// 16 to 24 are panel sizes, 32 and 48 the same at scale 2, 64 for docks.
constexpr int sizes[] = {16, 22, 24, 32, 48, 64};

QColor inkFor(BarTone tone) { return tone == BarTone::dark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x2e, 0x34, 0x36); }

QImage render(const QPainterPath& drawing, int size, const QColor& ink) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(qreal(size) / symbolSize, qreal(size) / symbolSize);
  painter.fillPath(drawing, ink);
  return image;
}

// Empty if there is no such drawing.
QPainterPath drawingOf(const QString& iconName) {
  loadSymbolResources();
  QFile file(QStringLiteral(":/tollvane/icons/%1.svg").arg(iconName));
  return file.open(QIODevice::ReadOnly) ? symbolPath(file.readAll()) : QPainterPath();
}

}  // namespace

QString iconNameForSymbol(std::string_view symbolName) {
  for (const Symbol& symbol : symbols)
    if (symbol.name == symbolName) return QString::fromLatin1(symbol.iconName);
  return {};
}

QList<QImage> drawIcon(const QString& iconName, BarTone tone) {
  const QPainterPath drawing = drawingOf(iconName);
  if (drawing.isEmpty()) return {};
  QList<QImage> images;
  for (const int size : sizes) images.append(render(drawing, size, inkFor(tone)));
  return images;
}

QImage drawSymbol(std::string_view symbolName, int pixels, const QColor& ink) {
  const QPainterPath drawing = drawingOf(iconNameForSymbol(symbolName));
  return drawing.isEmpty() || pixels <= 0 ? QImage() : render(drawing, pixels, ink);
}

}  // namespace tollvane
