// A program that does nothing with the toolkit's libraries that Tollvane uses: the baseline of Tollvane's memory.
#include <QApplication>
#include <QDBusConnection>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QDBusConnection::sessionBus().registerService(QStringLiteral("com.example.Empty"));
  return QApplication::exec();
}
