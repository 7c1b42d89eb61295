#include "platform/linux/system/qt_main_queue.h"

#include <QTimer>
#include <algorithm>
#include <utility>

namespace tollvane {

void QtMainQueue::post(Block block) { QMetaObject::invokeMethod(&receiver_, std::move(block), Qt::QueuedConnection); }

void QtMainQueue::after(Duration delay, Block block) {
  using std::chrono::milliseconds;
  // Rounded up, and precise: Qt's coarse timers may fire five per cent early.
  const auto wait = std::max(std::chrono::ceil<milliseconds>(delay), milliseconds::zero());
  QTimer::singleShot(wait, Qt::PreciseTimer, &receiver_, std::move(block));
}

}  // namespace tollvane
