// Ends the program in good order when its desktop session ends: when the session manager says so, and when the session
// bus goes, with which every session ends that has one. Main thread only; needs a QGuiApplication.
#pragma once

#include <QDBusConnection>
#include <QObject>

namespace tollvane {

class SessionEnd : public QObject {
  Q_OBJECT

 public:
  explicit SessionEnd(QDBusConnection bus);

 private Q_SLOTS:
  void busIsGone();
};

}  // namespace tollvane
