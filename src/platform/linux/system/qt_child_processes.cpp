#include "platform/linux/system/qt_child_processes.h"

#include <QFile>
#include <QProcess>
#include <utility>

namespace tollvane {
namespace {

class QtChildProcess : public ChildProcess {
 public:
  explicit QtChildProcess(ChildProcesses::Launch launch) : launch_(std::move(launch)) {
    process_.setInputChannelMode(QProcess::ForwardedInputChannel);
    process_.setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(&process_, &QProcess::readyReadStandardOutput, [this] { deliver(); });
    QObject::connect(&process_, &QProcess::finished, [this] {
      deliver();
      if (auto handler = std::exchange(launch_.onTermination, nullptr)) handler();
    });
  }

  ~QtChildProcess() override {
    process_.disconnect();
    if (process_.state() != QProcess::NotRunning) process_.kill();
    process_.waitForFinished();
  }

  bool start() {
    QStringList arguments;
    for (const auto& argument : launch_.arguments) arguments << QString::fromStdString(argument);
    process_.start(QFile::decodeName(launch_.executable.c_str()), arguments, QIODevice::ReadOnly);
    return process_.waitForStarted();
  }

  void removeTerminationHandler() override { launch_.onTermination = nullptr; }
  void terminate() override { process_.terminate(); }

 private:
  void deliver() {
    const QByteArray bytes = process_.readAllStandardOutput();
    if (!bytes.isEmpty()) launch_.onOutput({bytes.constData(), static_cast<std::size_t>(bytes.size())});
  }

  ChildProcesses::Launch launch_;
  QProcess process_;
};

}  // namespace

std::unique_ptr<ChildProcess> QtChildProcesses::launch(Launch launch) {
  auto process = std::make_unique<QtChildProcess>(std::move(launch));
  return process->start() ? std::move(process) : nullptr;
}

}  // namespace tollvane
