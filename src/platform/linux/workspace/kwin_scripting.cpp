#include "platform/linux/workspace/kwin_scripting.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>
#include <QTimer>
#include <QUuid>
#include <chrono>
#include <utility>

namespace tollvane {
namespace {

using namespace std::chrono_literals;

constexpr auto scriptPatience = 1000ms;
constexpr qsizetype longestScriptAnswer = 1 << 20;
constexpr QLatin1String kwinName("org.kde.KWin");
constexpr QLatin1String answersPath("/com/quarnel/tollvane/scripts");

// The texts are short enough for a thousand windows. Version 6 has other names for some things than version 5.
constexpr QLatin1String listWindows(R"(
  const six = workspace.windowList !== undefined;
  const all = six ? workspace.windowList() : workspace.clientList();
  const active = six ? workspace.activeWindow : workspace.activeClient;
  answer(JSON.stringify(all.filter((w) => w.normalWindow || w.dialog).map((w) => ({
    id: String(w.internalId), pid: w.pid, title: String(w.caption).slice(0, 400), name: String(w.resourceName),
    className: String(w.resourceClass), entry: String(w.desktopFileName || ""), active: w === active,
    height: w.stackingOrder || 0}))));
)");

constexpr QLatin1String activateWindow(R"(
  const six = workspace.windowList !== undefined;
  const window = (six ? workspace.windowList() : workspace.clientList()).find((w) => String(w.internalId) === wanted);
  if (window && six) workspace.activeWindow = window;
  if (window && !six) workspace.activeClient = window;
  answer(window && (six ? workspace.activeWindow : workspace.activeClient) === window ? "yes" : "no");
)");

// A text as JavaScript writes it.
QString quoted(const QString& text) {
  const QByteArray list = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(list.mid(1, list.size() - 2));
}

QDBusMessage callKWin(QLatin1String method) {
  QDBusMessage call = QDBusMessage::createMethodCall(kwinName, QStringLiteral("/Scripting"),
                                                     QStringLiteral("org.kde.kwin.Scripting"), method);
  call.setAutoStartService(false);
  return call;
}

}  // namespace

struct KWinScripting::Running {
  OnAnswer onAnswer;
  QTemporaryFile file{QDir::tempPath() + QStringLiteral("/tollvane-XXXXXX.js")};
  QTimer limit;
};

KWinScripting::KWinScripting(QDBusConnection bus) : bus_(std::move(bus)) {
  if (bus_.isConnected()) bus_.registerObject(answersPath, this, QDBusConnection::ExportScriptableSlots);
}

KWinScripting::~KWinScripting() {
  if (bus_.isConnected()) bus_.unregisterObject(answersPath);
}

void KWinScripting::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  run(listWindows, [this, target, done = std::move(done)](const std::optional<QString>& list) {
    const auto windows = list ? kwinWindows(list->toUtf8()) : std::nullopt;
    if (!windows) return done(Raised::unknown);
    const auto best = bestWindowOf(*windows, target);
    if (!best) return done(Raised::noWindow);
    run(QStringLiteral("const wanted = %1;").arg(quoted(QString::fromStdString(best->id))) + activateWindow,
        [done](const std::optional<QString>& answer) {
          done(answer == QLatin1String("yes") ? Raised::yes : Raised::unknown);
        });
  });
}

void KWinScripting::run(const QString& body, OnAnswer onAnswer) {
  if (!bus_.isConnected()) return onAnswer(std::nullopt);
  const QString script = QStringLiteral("tollvane-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
  auto running = std::make_shared<Running>();
  running->onAnswer = std::move(onAnswer);
  const QString text =
      QStringLiteral(
          "(function() {\nconst script = %1;\nconst answer = (text) => callDBus(%2, %3, "
          "\"com.quarnel.tollvane.Scripts\", \"Answer\", script, text);\n%4\n"
          "callDBus(\"org.kde.KWin\", \"/Scripting\", \"org.kde.kwin.Scripting\", \"unloadScript\", script);\n})();\n")
          .arg(quoted(script), quoted(bus_.baseService()), quoted(answersPath), body);
  if (!running->file.open() || running->file.write(text.toUtf8()) < 0 || !running->file.flush())
    return running->onAnswer(std::nullopt);
  running_.insert(script, running);
  connect(&running->limit, &QTimer::timeout, this, [this, script] { finish(script, std::nullopt); });
  running->limit.setSingleShot(true);
  running->limit.start(scriptPatience);
  QDBusMessage load = callKWin(QLatin1String("loadScript"));
  load << running->file.fileName() << script;
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(load), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this, script](QDBusPendingCallWatcher* loaded) {
    loaded->deleteLater();
    const QDBusPendingReply<int> number = *loaded;
    if (!number.isValid() || number.value() < 0) return finish(script, std::nullopt);
    kwin_ = bus_.interface()->serviceOwner(kwinName).value();
    start(script);
  });
}

// Starts all scripts that were loaded and not started.
void KWinScripting::start(const QString& script) {
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(callKWin(QLatin1String("start"))), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this, script](QDBusPendingCallWatcher* started) {
    started->deleteLater();
    if (started->isError()) finish(script, std::nullopt);
  });
}

void KWinScripting::Answer(const QString& script, const QString& text) {
  if (calledFromDBus() && message().service() != kwin_) return;
  if (text.size() <= longestScriptAnswer) finish(script, text);
}

void KWinScripting::finish(const QString& script, const std::optional<QString>& answer) {
  const auto running = running_.take(script);
  if (!running) return;
  running->limit.stop();
  if (!answer && !kwin_.isEmpty()) bus_.asyncCall(callKWin(QLatin1String("unloadScript")) << script);
  // From the event loop: the timer that has led here must not be destroyed in its own signal.
  QMetaObject::invokeMethod(
      this, [running, answer] { running->onAnswer(answer); }, Qt::QueuedConnection);
}

std::optional<std::vector<OpenWindow>> kwinWindows(const QByteArray& list) {
  const QJsonDocument document = QJsonDocument::fromJson(list);
  if (!document.isArray()) return std::nullopt;
  std::vector<OpenWindow> windows;
  for (const auto each : document.array()) {
    const QJsonObject window = each.toObject();
    const auto text = [&](const char* key) { return window.value(QLatin1String(key)).toString().toStdString(); };
    windows.push_back({.id = text("id"),
                       .pid = window.value(QLatin1String("pid")).toInt(),
                       .names = {text("className"), text("name"), text("entry")},
                       .title = text("title"),
                       .isActive = window.value(QLatin1String("active")).toBool(),
                       .height = window.value(QLatin1String("height")).toDouble()});
  }
  return windows;
}

}  // namespace tollvane
