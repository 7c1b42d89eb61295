// Brings windows forward on KWin, Plasma's window manager, on Wayland and on X11: a short script, which KWin runs for
// us, tells of the windows, and another one makes one of them the active window. Each unloads itself, so that nothing
// stays behind in KWin, even if Tollvane is killed. Main thread only.
// Source: KWin scripting API, https://develop.kde.org/docs/plasma/kwin/api/ (versions 5.27 and 6).
#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusContext>
#include <QHash>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/workspace/window_raiser.h"

namespace tollvane {

class KWinScripting : public QObject, public WindowRaiser, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quarnel.tollvane.Scripts")

 public:
  explicit KWinScripting(QDBusConnection bus);
  ~KWinScripting() override;

  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

  // NOLINTBEGIN(readability-identifier-naming): names on the bus
 public Q_SLOTS:
  // What a script has to say. Only KWin's own answers count.
  Q_SCRIPTABLE void Answer(const QString& script, const QString& text);
  // NOLINTEND(readability-identifier-naming)

 private:
  using OnAnswer = std::function<void(const std::optional<QString>&)>;
  struct Running;

  // Absent if there is no KWin, or if it does not answer in time.
  void run(const QString& body, OnAnswer onAnswer);
  void start(const QString& script);
  void finish(const QString& script, const std::optional<QString>& answer);

  QDBusConnection bus_;
  QHash<QString, std::shared_ptr<Running>> running_;  // by the script's name
  QString kwin_;                                      // the unique name of the KWin that was asked last
};

// KWin's windows, from the list that our script writes; absent if it cannot be read.
std::optional<std::vector<OpenWindow>> kwinWindows(const QByteArray& list);

}  // namespace tollvane
