// The title of one menu item, laid out: one or two lines of runs, each run drawn for itself, so that no character of
// one can turn around or join what stands beside it.
//
//   MenuTitle title(item, menuFont);
//   title.arrange(column, 400);
//   title.draw(painter, {10, 4}, colorOf);
//
// A first run in monospaced digits is the lead of its line: a time, or blanks that stand below one. All leads of a menu
// share one column, so that what follows them starts at the same place in every line. Lengths are logical pixels.
// Main thread only.
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
  // `menuFont` is what the user's desktop writes menus in: the roles' fonts are variations of it.
  MenuTitle(const MenuItem& item, const QFont& menuFont);

  // The width that the widest lead wants; 0 when no line has one that shows.
  qreal leadWidth() const;

  // Gives the leads their column, and shortens the longest runs with an ellipsis until each line fits into `maxWidth`.
  void arrange(qreal leadColumn, qreal maxWidth);

  QSizeF size() const;

  // Where the lines' texts start behind their leads, from the title's left edge.
  std::vector<qreal> textStarts() const;

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
  static void shorten(Line& line, qreal maxWidth);

  std::vector<Line> lines_;
};

}  // namespace tollvane
