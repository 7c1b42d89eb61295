#include "platform/linux/menu/menu_style.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <vector>

#include "platform/linux/drawing/contrast.h"
#include "platform/linux/menu/menu_widget.h"

namespace tollvane {
namespace {

// The entry that is being measured or drawn; null for separators and for all that is not our entry.
const MenuEntry* entryOf(const QStyleOption* option, const QWidget* widget) {
  const auto* menu = dynamic_cast<const MenuWidget*>(widget);
  const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  if (menu == nullptr || item == nullptr || item->menuItemType == QStyleOptionMenuItem::Separator) return nullptr;
  if (item->menuItemType == QStyleOptionMenuItem::Scroller || item->menuItemType == QStyleOptionMenuItem::EmptyArea ||
      item->menuItemType == QStyleOptionMenuItem::Margin || item->menuItemType == QStyleOptionMenuItem::TearOff) {
    return nullptr;
  }
  return menu->styledEntry();
}

QStyleOptionMenuItem withoutText(const QStyleOption* option) {
  QStyleOptionMenuItem bare = *qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  bare.text.clear();
  return bare;
}

QString keyText(const MenuEntry& entry) { return entry.keys().toString(QKeySequence::NativeText); }

bool isSeparator(const QStyleOption* option, const QWidget* widget) {
  const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  return item != nullptr && item->menuItemType == QStyleOptionMenuItem::Separator &&
         dynamic_cast<const MenuWidget*>(widget) != nullptr;
}

bool isChosen(const QStyleOptionMenuItem& option) { return option.state & QStyle::State_Selected; }

int roomForArrow(const QFontMetrics& metrics) { return metrics.height(); }

}  // namespace

int MenuStyle::padding(const QFont& menuFont) { return QFontMetrics(menuFont).height() * 3 / 4; }

QSize MenuStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const {
  const MenuEntry* entry = type == CT_MenuItem ? entryOf(option, widget) : nullptr;
  if (entry == nullptr) return QProxyStyle::sizeFromContents(type, option, size, widget);
  const QStyleOptionMenuItem bare = withoutText(option);
  const QFontMetrics metrics(bare.font);
  const QSize title = entry->title().size().toSize();
  // The style's height of an entry of one line tells how much room it leaves above and below.
  const int line = metrics.height();
  const int base = QProxyStyle::sizeFromContents(type, &bare, QSize(title.width(), line), widget).height();
  int width = title.width() + 2 * padding(bare.font);
  if (!entry->keys().isEmpty()) width += metrics.horizontalAdvance(keyText(*entry)) + 2 * padding(bare.font);
  if (bare.menuItemType == QStyleOptionMenuItem::SubMenu) width += roomForArrow(metrics);
  return {width, title.height() + std::max(base - line, line / 3)};
}

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  if (element == CE_MenuItem && isSeparator(option, widget) && separatorsVanish(option->palette))
    return drawSeparator(*option, *painter);
  const MenuEntry* entry = element == CE_MenuItem ? entryOf(option, widget) : nullptr;
  if (entry == nullptr) return QProxyStyle::drawControl(element, option, painter, widget);
  const QStyleOptionMenuItem bare = withoutText(option);
  if (!isChosen(bare) && isUnderScroller(bare.rect, *dynamic_cast<const MenuWidget*>(widget))) return;
  QProxyStyle::drawControl(element, &bare, painter, widget);
  painter->save();
  painter->setClipRect(bare.rect);
  drawEntry(*entry, bare, *painter);
  painter->restore();
}

// A row of which the arrow for scrolling hides a part is not drawn: half a row is worse than none.
bool MenuStyle::isUnderScroller(const QRect& row, const MenuWidget& menu) const {
  const int frame = pixelMetric(PM_MenuPanelWidth, nullptr, &menu);
  const int margin = frame + pixelMetric(PM_MenuVMargin, nullptr, &menu);
  const int arrow = frame + pixelMetric(PM_MenuScrollerHeight, nullptr, &menu);
  const bool goesOnAbove = menu.actionGeometry(menu.entries().front()).top() < margin;
  const bool goesOnBelow = menu.actionGeometry(menu.entries().back()).bottom() >= menu.height() - margin;
  return (goesOnAbove && row.top() < arrow) || (goesOnBelow && row.bottom() >= menu.height() - arrow);
}

// The toolkit's own style draws separators darker than the menu, even if the menu is dark.
bool MenuStyle::separatorsVanish(const QPalette& palette) const {
  return baseStyle()->name() == QLatin1String("fusion") &&
         palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

void MenuStyle::drawSeparator(const QStyleOption& option, QPainter& painter) {
  constexpr double faint = 0.22;
  constexpr int inset = 4;
  const QColor line = blend(option.palette.color(QPalette::WindowText), option.palette.color(QPalette::Window), faint);
  painter.fillRect(option.rect.x() + inset, option.rect.center().y(), option.rect.width() - 2 * inset, 1, line);
}

void MenuStyle::drawEntry(const MenuEntry& entry, const QStyleOptionMenuItem& option, QPainter& painter) const {
  const MenuColors colors(option.palette);
  const bool enabled = option.state & State_Enabled;
  const bool selected = enabled && (option.state & State_Selected);
  const auto colorOf = [&](TextColor role) {
    return selected ? colors.selected() : enabled ? colors.of(role) : colors.disabled();
  };
  const int side = padding(option.font);
  const qreal height = entry.title().size().height();
  entry.title().draw(painter, {option.rect.x() + side * 1.0, option.rect.y() + (option.rect.height() - height) / 2},
                     colorOf);
  if (entry.keys().isEmpty()) return;
  painter.setFont(option.font);
  painter.setPen(colorOf(TextColor::secondaryLabel));
  painter.drawText(option.rect.adjusted(0, 0, -side, 0), Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                   keyText(entry));
}

int MenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  const int own = QProxyStyle::pixelMetric(metric, option, widget);
  if (metric == PM_MenuVMargin && dynamic_cast<const MenuWidget*>(widget) != nullptr) return std::max(own, 4);
  return own;
}

int MenuStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* returned) const {
  switch (hint) {
    case SH_Menu_Scrollable:  // scroll instead of showing a second column
    case SH_Menu_MouseTracking:
      return 1;
    case SH_Menu_KeyboardSearch:  // off: our own search finds names by their beginnings
      return 0;
    default:
      return QProxyStyle::styleHint(hint, option, widget, returned);
  }
}

MenuColors::MenuColors(const QPalette& palette) {
  // Always the active group, because on some desktops a menu never becomes the active window.
  const auto color = [&palette](QPalette::ColorRole role) { return palette.color(QPalette::Active, role).toRgb(); };
  // Some styles draw menus on the first of these, some on the second.
  const std::vector<QColor> behind{color(QPalette::Window), color(QPalette::Base)};
  label_ = readable(color(QPalette::WindowText), behind, readableContrast);
  secondary_ = readable(blend(label_, behind.front(), 0.70), behind, readableContrast);
  tertiary_ = readable(blend(label_, behind.front(), 0.45), behind, visibleContrast);
  accent_ = readable(color(QPalette::Highlight), behind, readableContrast);
  selected_ = readable(color(QPalette::HighlightedText), {color(QPalette::Highlight)}, visibleContrast);
}

QColor MenuColors::of(TextColor role) const {
  switch (role) {
    case TextColor::secondaryLabel:
      return secondary_;
    case TextColor::tertiaryLabel:
      return tertiary_;
    case TextColor::controlAccent:
      return accent_;
    default:
      return label_;
  }
}

}  // namespace tollvane
