// SIGTERM, SIGINT and SIGHUP as an ordinary event on the main queue, so that a program that is asked to end does so in
// good order. Make it on the main thread before any other thread is started; one per process.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "support/unique_fd.h"

namespace tollvane {

class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> onSignal);

 private:
  UniqueFd fd_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace tollvane
