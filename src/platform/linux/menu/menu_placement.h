// Where a menu opens. Pure; all lengths are logical pixels of one screen's coordinates.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace tollvane {

// The top left corner of a menu of this size for a click on an icon of a panel: along the panel's edge, beside the
// panel, and wholly on the screen if possible. `available`: the screen without its panels, if that is known. `panel`:
// the panel's own place; empty if that is not known.
QPoint menuPosition(const QSize& menu, const QPoint& click, const QRect& screen, const QRect& available,
                    const QRect& panel = {});

}  // namespace tollvane
