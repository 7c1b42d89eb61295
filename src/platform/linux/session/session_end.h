// The ways in which the program ends, each in good order. Main thread only.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "platform/posix/unique_fd.h"

namespace tollvane {

// Ends the event loop when the desktop session ends: when the session manager says so, and when the session bus goes,
// with which every session ends that has one. Needs a QGuiApplication.
class SessionEnd : public QObject {
  Q_OBJECT

 public:
  explicit SessionEnd(QDBusConnection bus);

 private Q_SLOTS:
  void busIsGone();
};

// SIGTERM, SIGINT and SIGHUP as an ordinary event on the main queue. Make it before any other thread is started; one
// per process.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> onSignal);

 private:
  UniqueFd fd_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

// Calls back once, whichever way the program ends: out of its event loop, or by the toolkit, which leaves through
// exit() when the display server is gone. One per process; needs a QCoreApplication.
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
