// The main queue, run by Qt's event loop. Make it on the main thread, after the application object.
#pragma once

#include <QObject>

#include "platform/main_queue.h"

namespace tollvane {

class QtMainQueue : public MainQueue {
 public:
  void post(Block block) override;
  void after(Duration delay, Block block) override;
  std::unique_ptr<Watch> watchReadable(int descriptor, Block block) override;
  std::unique_ptr<Watch> watchWritable(int descriptor, Block block) override;
  std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) override;

 private:
  QObject receiver_;  // lives on the main thread; blocks that still wait are dropped with it
};

}  // namespace tollvane
