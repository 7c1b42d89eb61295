#include "platform/linux/menu/menu_title.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <numeric>

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
namespace {

constexpr qreal lineGap = 2;
constexpr std::size_t maxLines = 2;
constexpr qreal unlimited = 100000;

QFont::Weight weightOf(FontWeight weight, const QFont& menuFont) {
  switch (weight) {
    case FontWeight::medium:
      return std::max(QFont::Medium, menuFont.weight());
    case FontWeight::semibold:
      return std::max(QFont::DemiBold, menuFont.weight());
    case FontWeight::regular:
      break;
  }
  return menuFont.weight();
}

QFont fontOf(const Font& role, const QFont& menuFont) {
  QFont font = menuFont;
  const qreal scale = role.size / menuFontSize;
  if (scale != 1 && menuFont.pointSizeF() > 0) font.setPointSizeF(menuFont.pointSizeF() * scale);
  if (scale != 1 && menuFont.pointSizeF() <= 0) font.setPixelSize(qRound(menuFont.pixelSize() * scale));
  font.setWeight(weightOf(role.weight, menuFont));
  return font;
}

bool isBlank(const QString& text) {
  return std::all_of(text.begin(), text.end(), [](QChar character) { return character.isSpace(); });
}

qreal widestDigit(const QFontMetricsF& metrics) {
  qreal widest = 0;
  for (char16_t digit = u'0'; digit <= u'9'; ++digit)
    widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
  return widest;
}

// Calls `piece(text, x)` for each part of a text whose digits have equal width; returns the width of the whole.
template <typename Piece>
qreal inCells(const QString& text, const QFont& font, Piece piece) {
  const QFontMetricsF metrics(font);
  const qreal cell = widestDigit(metrics);
  qreal x = 0;
  for (qsizetype at = 0; at < text.size();) {
    qsizetype end = at + 1;
    const bool digit = text.at(at).isDigit();
    while (!digit && end < text.size() && !text.at(end).isDigit()) ++end;
    const QString part = text.mid(at, end - at);
    const qreal width = metrics.horizontalAdvance(part);
    const qreal room = digit ? std::max(cell, width) : width;
    piece(part, x + (room - width) / 2);
    x += room;
    at = end;
  }
  return x;
}

qreal widthInCells(const QString& text, const QFont& font) {
  return inCells(text, font, [](const QString&, qreal) {});
}

bool isStrong(QChar::Direction direction) {
  return direction == QChar::DirL || direction == QChar::DirR || direction == QChar::DirAL;
}

// The ellipsis stands where the text was cut, which is on the left if the letters before it are read from right to
// left. A mark behind it makes it one of them.
QString withEllipsisInPlace(QString text) {
  constexpr QChar rightToLeftMark = u'\u200F';
  if (!text.endsWith(ellipsis)) return text;
  const auto last = std::find_if(text.crbegin(), text.crend(), [](QChar c) { return isStrong(c.direction()); });
  if (last != text.crend() && last->direction() != QChar::DirL) text += rightToLeftMark;
  return text;
}

// Draws from left to right, whatever the text's own direction is, and never as markup.
void drawLine(QPainter& painter, QPointF baseline, const QString& text, const QFont& font, const QColor& color) {
  QTextLayout layout(text, font);
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(option);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (line.isValid()) line.setLineWidth(unlimited);
  layout.endLayout();
  if (!line.isValid()) return;
  painter.setPen(color);
  layout.draw(&painter, {baseline.x(), baseline.y() - line.ascent()});
}

}  // namespace

qreal MenuTitle::Line::runsWidth() const {
  return std::accumulate(runs.begin(), runs.end(), 0.0, [](qreal sum, const Run& run) { return sum + run.width; });
}

MenuTitle::MenuTitle(const MenuItem& item, const QFont& menuFont) : lines_(1) {
  if (item.attributedTitle.empty()) add({item.title, {}, TextColor::unset}, menuFont);
  for (const TextRun& run : item.attributedTitle) add(run, menuFont);
  for (Line& line : lines_) {
    const QFontMetricsF plain(menuFont);
    line.ascent = plain.ascent();
    line.height = plain.height();
  }
}

void MenuTitle::add(const TextRun& run, const QFont& menuFont) {
  std::string_view text = run.text;
  if (beginsLine(run)) {
    text.remove_prefix(1);
    if (lines_.size() < maxLines) lines_.emplace_back();
  }
  Line& line = lines_.back();
  Run made{plainLine(text), fontOf(run.font, menuFont), run.color};
  if (run.font.family == FontFamily::monospacedDigits && !line.lead && line.runs.empty()) {
    made.width = widthInCells(made.text, made.font);
    line.lead = std::move(made);
    return;
  }
  made.width = QFontMetricsF(made.font).horizontalAdvance(made.text);
  line.runs.push_back(std::move(made));
}

qreal MenuTitle::leadWidth() const {
  qreal widest = 0;
  for (const Line& line : lines_)
    if (line.lead && !isBlank(line.lead->text)) widest = std::max(widest, line.lead->width);
  return widest;
}

void MenuTitle::arrange(qreal leadColumn, qreal maxWidth) {
  for (Line& line : lines_) {
    // If no title has a time, the blanks keep their own width.
    if (line.lead) line.textStart = leadColumn > 0 ? std::max(leadColumn, leadWidth()) : line.lead->width;
    shorten(line, maxWidth - line.textStart);
  }
}

// The first line is cut at its end. The second ends with the tab's host, and a host's own end tells whose it is: that
// line is cut in its middle.
void MenuTitle::shorten(Line& line, qreal maxWidth) const {
  const auto place = &line == &lines_.front() ? Qt::ElideRight : Qt::ElideMiddle;
  for (std::size_t pass = 0; pass < line.runs.size(); ++pass) {
    const qreal excess = line.runsWidth() - maxWidth;
    if (excess <= 0) return;
    Run& longest = *std::max_element(line.runs.begin(), line.runs.end(),
                                     [](const Run& one, const Run& other) { return one.width < other.width; });
    const QFontMetricsF metrics(longest.font);
    const qreal room = std::max(longest.width - excess, metrics.horizontalAdvance(QStringLiteral("MMM\u2026")));
    longest.text = withEllipsisInPlace(metrics.elidedText(longest.text, place, room, Qt::TextForceLeftToRight));
    longest.width = metrics.horizontalAdvance(longest.text);
  }
}

QSizeF MenuTitle::size() const {
  qreal width = 0;
  qreal height = lineGap * static_cast<qreal>(lines_.size() - 1);
  for (const Line& line : lines_) {
    width = std::max(width, line.textStart + line.runsWidth());
    height += line.height;
  }
  return {std::ceil(width), std::ceil(height)};
}

std::vector<qreal> MenuTitle::textStarts() const {
  std::vector<qreal> starts;
  for (const Line& line : lines_) starts.push_back(line.textStart);
  return starts;
}

std::vector<QString> MenuTitle::texts() const {
  std::vector<QString> texts;
  for (const Line& line : lines_) {
    texts.emplace_back();
    for (const Run& run : line.runs) texts.back() += run.text;
  }
  return texts;
}

void MenuTitle::draw(QPainter& painter, QPointF topLeft, const std::function<QColor(TextColor)>& colorOf) const {
  qreal y = topLeft.y();
  for (const Line& line : lines_) {
    const qreal baseline = y + line.ascent;
    if (line.lead && !isBlank(line.lead->text)) {
      // Right-aligned, so that the colons of 9:05 and 12:05 stand below each other.
      const qreal left = topLeft.x() + line.textStart - line.lead->width;
      const QColor color = colorOf(line.lead->color);
      inCells(line.lead->text, line.lead->font, [&](const QString& part, qreal x) {
        drawLine(painter, {left + x, baseline}, part, line.lead->font, color);
      });
    }
    qreal x = topLeft.x() + line.textStart;
    for (const Run& run : line.runs) {
      drawLine(painter, {x, baseline}, run.text, run.font, colorOf(run.color));
      x += run.width;
    }
    y += line.height + lineGap;
  }
}

}  // namespace tollvane
