// Draws one alert into a picture file: alert_probe FILE.png light|dark MESSAGE INFORMATION BUTTON...
#include <QApplication>
#include <QMessageBox>
#include <QStyleFactory>
#include <QTimer>

#include "platform/linux/windows/qt_alerts.h"

namespace {

QPalette darkPalette() {
  QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x2a, 0x2a, 0x2a));
  palette.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xe4));
  return palette;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace tollvane;
  QApplication application(argc, argv);
  if (argc < 6) return EXIT_FAILURE;
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  if (QByteArray(argv[2]) == "dark") QApplication::setPalette(darkPalette());
  Alert alert{argv[3], argv[4], {argv + 5, argv + argc}};
  bool saved = false;
  QtAlerts alerts([&](QMessageBox& box) {
    QTimer::singleShot(0, &box, [&] {
      saved = box.grab().save(QString::fromLocal8Bit(argv[1]));
      QApplication::quit();
    });
  });
  alerts.show(alert, [](std::size_t) {});
  QApplication::exec();
  return saved ? EXIT_SUCCESS : EXIT_FAILURE;
}
