#include "platform/linux/menu/menu_entry.h"

#include <algorithm>

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
namespace {

QString typedName(const MenuItem& item) {
  for (const TextRun& run : item.attributedTitle) {
    if (run.font.family != FontFamily::monospacedDigits) return plainLine(run.text).trimmed();
  }
  return plainLine(item.title).trimmed();
}

// A tooltip that looks like markup would be read as such, so all of them are markup without any.
QString toolTipMarkup(const std::string& toolTip) {
  return toolTip.empty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(plainLine(toolTip).toHtmlEscaped());
}

}  // namespace

QString spokenTitle(const MenuItem& item) {
  QString spoken = plainLine(item.title);
  for (const TextRun& run : item.attributedTitle) spoken += plainLine(run.text);
  return spoken.simplified();
}

MenuEntry::MenuEntry(const MenuItem& item, const QFont& menuFont, QObject* parent)
    : QAction(parent), item_(item), title_(item, menuFont), typed_(typedName(item)) {
  setText(spokenTitle(item).replace(u'&', QStringLiteral("&&")));
  setToolTip(toolTipMarkup(item.toolTip));
  setSeparator(item.isSeparator);
  setEnabled(item.isEnabled);
  setMenuRole(QAction::NoRole);
  if (!item.keyEquivalent.empty()) {
    keys_ = QKeySequence(QStringLiteral("Ctrl+") + plainLine(item.keyEquivalent).toUpper());
    // For screen readers; the menu itself acts on the keys, and only while it is open.
    setShortcutContext(Qt::WidgetShortcut);
    setShortcut(keys_);
  }
}

}  // namespace tollvane
