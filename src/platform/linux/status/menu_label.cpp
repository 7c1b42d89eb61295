#include "platform/linux/status/menu_label.h"

#include "platform/linux/status/plain_text.h"

namespace tollvane {
namespace {

const QString kAfterTime = QStringLiteral("  ");
const QString kDot = QStringLiteral(" \u00b7 ");
const QString kDash = QStringLiteral(" \u2014 ");

// Roles of the runs, not their texts, say where a new part begins: blanks are only for drawn titles.
QString labelOf(const AttributedText& title) {
  QString label;
  QString between;
  for (const TextRun& run : title) {
    if (run.text.starts_with('\n') && !label.isEmpty()) between = kDash;
    const QString text = plainLine(run.text).trimmed();
    if (text.isEmpty()) continue;
    label += between + text;
    between = run.font.family == FontFamily::monospacedDigits ? kAfterTime : kDot;
  }
  return label;
}

}  // namespace

QString menuLabel(const MenuItem& item) {
  QString label = item.attributedTitle.empty() ? plainLine(item.title) : labelOf(item.attributedTitle);
  return label.replace(u'_', QStringLiteral("__"));
}

}  // namespace tollvane
