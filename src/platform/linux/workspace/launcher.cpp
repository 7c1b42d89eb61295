#include "platform/linux/workspace/launcher.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <utility>

#include "platform/linux/apps/desktop_entry.h"

namespace tollvane {
namespace {

// What was meant for this program alone.
constexpr const char* ownVariables[] = {
    "DESKTOP_STARTUP_ID",
    "GIO_LAUNCHED_DESKTOP_FILE",
    "GIO_LAUNCHED_DESKTOP_FILE_PID",
    "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION",
    "TOLLVANE_STARTED_AT_LOGIN",
    "XDG_ACTIVATION_TOKEN",
};

bool isThere(const char* tool) { return !QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty(); }

// What is left without the desktop's tool: the command that the entry names, with the pages behind it. An application
// that is to run in a terminal, or is known to the bus alone, cannot be started like this.
std::vector<std::string> commandOf(const std::filesystem::path& file, const std::vector<std::string>& uris) {
  const auto entry = readDesktopEntry(file.string(), {});
  if (!entry || entry->hidden || entry->terminal) return {};
  std::vector<std::string> command = entry->command;
  if (!command.empty()) command.insert(command.end(), uris.begin(), uris.end());
  return command;
}

}  // namespace

void GioLauncher::launch(const std::filesystem::path& entry, const std::vector<std::string>& uris, Done done) {
  std::vector<Attempt> attempts;
  if (isThere("gio")) {
    Attempt attempt{{"gio", "launch", entry.string()}, Attempt::answers};
    attempt.command.insert(attempt.command.end(), uris.begin(), uris.end());
    attempts.push_back(std::move(attempt));
  } else if (auto command = commandOf(entry, uris); !command.empty()) {
    attempts.push_back({std::move(command), Attempt::stays});
  }
  runFirst(std::move(attempts), environment(), std::move(done));
}

void GioLauncher::open(const std::string& target, Done done) {
  std::vector<Attempt> attempts;
  if (isThere("gio")) attempts.push_back({{"gio", "open", target}, Attempt::answers});
  if (isThere("xdg-open")) attempts.push_back({{"xdg-open", target}, Attempt::stays});
  runFirst(std::move(attempts), environment(), std::move(done));
}

void GioLauncher::runFirst(std::vector<Attempt> attempts, const QProcessEnvironment& environment, Done done) {
  if (attempts.empty()) {
    QTimer::singleShot(0, QCoreApplication::instance(), alive_.guard([done = std::move(done)] { done(false); }));
    return;
  }
  const Attempt attempt = std::move(attempts.front());
  attempts.erase(attempts.begin());
  run(attempt, environment,
      alive_.guard([this, rest = std::move(attempts), environment, done = std::move(done)](bool started) mutable {
        if (started || rest.empty()) return done(started);
        runFirst(std::move(rest), environment, std::move(done));
      }));
}

void GioLauncher::run(const Attempt& attempt, const QProcessEnvironment& environment, Done done) {
  auto* process = new QProcess(QCoreApplication::instance());
  process->setProgram(QString::fromStdString(attempt.command.front()));
  QStringList arguments;
  for (std::size_t i = 1; i < attempt.command.size(); ++i) arguments << QString::fromStdString(attempt.command[i]);
  process->setArguments(arguments);
  process->setProcessEnvironment(environment);
  process->setStandardInputFile(QProcess::nullDevice());
  process->setStandardOutputFile(QProcess::nullDevice());
  process->setStandardErrorFile(QProcess::nullDevice());
  if (attempt.kind == Attempt::stays) {
    const bool started = process->startDetached();
    process->deleteLater();
    QTimer::singleShot(0, QCoreApplication::instance(), [done = std::move(done), started] { done(started); });
    return;
  }
  // A terminal that this program was started in has no say over what is started from here.
  process->setChildProcessModifier([] { ::setsid(); });
  const auto finish = [process, done = std::move(done)](bool started) {
    process->deleteLater();
    done(started);
  };
  QObject::connect(process, &QProcess::finished, process, [finish](int code, QProcess::ExitStatus status) {
    finish(status == QProcess::NormalExit && code == 0);
  });
  QObject::connect(process, &QProcess::errorOccurred, process, [finish](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) finish(false);
  });
  process->start();
}

QProcessEnvironment GioLauncher::environment() const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : ownVariables) environment.remove(QString::fromLatin1(name));
  if (const std::string token = tokens_ ? tokens_() : std::string(); !token.empty()) {
    environment.insert(QStringLiteral("XDG_ACTIVATION_TOKEN"), QString::fromStdString(token));
    environment.insert(QStringLiteral("DESKTOP_STARTUP_ID"), QString::fromStdString(token));
  }
  return environment;
}

}  // namespace tollvane
