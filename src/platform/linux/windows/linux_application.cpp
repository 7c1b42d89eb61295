#include "platform/linux/windows/linux_application.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <QWindow>
#include <utility>

namespace tollvane {
namespace {

// Calls `action` when the window is on the screen: no window manager knows it before.
class FirstExposure : public QObject {
 public:
  FirstExposure(QWindow& window, std::function<void()> action) : QObject(&window), action_(std::move(action)) {
    window.installEventFilter(this);
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Expose && static_cast<QWindow*>(watched)->isExposed()) {
      watched->removeEventFilter(this);
      deleteLater();
      // Queued, so that the window has handled the event.
      QMetaObject::invokeMethod(watched, std::move(action_), Qt::QueuedConnection);
    }
    return false;
  }

 private:
  std::function<void()> action_;
};

}  // namespace

void LinuxApplication::activateIgnoringOtherApps() {
  useToken();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->windowType() != Qt::Popup && window->windowType() != Qt::ToolTip)
      bringForward(*window);
  }
}

// Qt takes the token from the environment when it next asks the compositor to bring a window forward.
void LinuxApplication::useToken() {
  const std::string token = tokens_ ? tokens_() : std::string();
  if (!token.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
}

void LinuxApplication::bringForward(QWidget& window) {
  QWindow* handle = window.windowHandle();
  if (handle == nullptr) return;
  if (handle->isExposed()) return bringForwardNow(window);
  new FirstExposure(*handle, [this, window = &window] { bringForwardNow(*window); });
}

void LinuxApplication::bringForwardNow(QWidget& window) {
  window.raise();
  window.activateWindow();
  // Qt asks in the program's name, which window managers may take for stealing the focus. This says that the user wants
  // it.
  if (QGuiApplication::platformName() == QLatin1String("xcb"))
    x11_.raiseOwn(static_cast<std::uint32_t>(window.winId()), [](Raised) {});
}

void LinuxApplication::terminate() { QCoreApplication::quit(); }

}  // namespace tollvane
