// The title of one menu item, laid out: one or two lines of runs. Each run is drawn by itself, so that its characters
// can neither turn around nor join what stands beside it.
//
//   MenuTitle title(item, menuFont);
//   title.arrange(column, 400);
//   title.draw(painter, {10, 4}, colorOf);
//
// If the first run of a line is in monospaced digits, it is the lead of the line: a time, or blanks below a time. All
// leads of a menu share one column, so that the text after them starts at the same place in every line. Lengths are
// logical pixels. Main thread only.
#pragma once

#include <QFont>
#include <QPainter>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "platform/menu.h"

namespace tollvane {

class MenuTitle {
 public:
  // `menuFont`: the font of menus on the user's desktop. The fonts of the roles are variations of it.
  MenuTitle(const MenuItem& item, const QFont& menuFont);

  // The width that the widest lead needs; 0 if no line has a visible lead.
  qreal leadWidth() const;

  // Sets the width of the leads' column, and shortens the longest runs with an ellipsis until each line fits
  // `maxWidth`.
  void arrange(qreal leadColumn, qreal maxWidth);

  QSizeF size() const;

  // Where the text of each line starts after its lead, counted from the title's left edge.
  std::vector<qreal> textStarts() const;

  // The text of each line after its lead, as it is drawn.
  std::vector<QString> texts() const;

  void draw(QPainter& painter, QPointF topLeft, const std::function<QColor(TextColor)>& colorOf) const;

 private:
  struct Run {
    QString text;
    QFont font;
    TextColor color = TextColor::unset;
    qreal width = 0;
  };
  struct Line {
    std::optional<Run> lead;
    std::vector<Run> runs;
    qreal ascent = 0;
    qreal height = 0;
    qreal textStart = 0;

    qreal runsWidth() const;
  };

  void add(const TextRun& run, const QFont& menuFont);
  void shorten(Line& line, qreal maxWidth) const;

  std::vector<Line> lines_;
};

}  // namespace tollvane
