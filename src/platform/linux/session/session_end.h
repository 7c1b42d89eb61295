// The ways in which the program ends in good order. Main thread only.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "platform/posix/unique_fd.h"

namespace tollvane {

// Ends the event loop when the desktop session ends: when the session manager says so, or when the session bus goes
// away, with which every session ends that has one. Needs a QGuiApplication.
class SessionEnd : public QObject {
  Q_OBJECT

 public:
  explicit SessionEnd(QDBusConnection bus);

 private Q_SLOTS:
  void busIsGone();
};

// Turns SIGTERM, SIGINT and SIGHUP into an ordinary event on the main queue. Make it before any other thread is
// started; only one per process.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> onSignal);

 private:
  UniqueFd fd_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

// Calls `handler` once, however the program ends: by leaving its event loop, or through exit(), which the toolkit calls
// when the display server is gone. Only one per process; needs a QCoreApplication.
class LastWord {
 public:
  explicit LastWord(std::function<void()> handler);
  ~LastWord() { say(); }
  LastWord(const LastWord&) = delete;
  LastWord& operator=(const LastWord&) = delete;

 private:
  static void say();
};

}  // namespace tollvane
