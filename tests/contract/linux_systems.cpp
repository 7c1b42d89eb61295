// Tests that the implementations for Linux keep the contracts of the roles.
#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <fstream>
#include <memory>
#include <utility>

#include "platform/linux/kernel/proc_fs.h"
#include "platform/linux/session/autostart_login.h"
#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/linux/system/lazy_http.h"
#include "platform/linux/system/qt_child_processes.h"
#include "platform/linux/system/qt_main_queue.h"
#include "platform/posix/posix_files.h"
#include "tests/contract/bundle_contract.h"
#include "tests/contract/child_processes_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/defaults_contract.h"
#include "tests/contract/files_contract.h"
#include "tests/contract/http_contract.h"
#include "tests/contract/login_contract.h"
#include "tests/contract/main_queue_contract.h"
#include "tests/contract/process_table_contract.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_application.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

struct LinuxFiles {
  TemporaryDirectory directory;
  PosixFiles files;
  std::filesystem::path folder = directory.path();
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, FilesContract, LinuxFiles);

class LinuxDefaults {
 public:
  Defaults& defaults() { return *defaults_; }
  void startAgain() { defaults_ = std::make_unique<JsonDefaults>(files_, directory_ / "defaults.json"); }

 private:
  TemporaryDirectory directory_;
  PosixFiles files_;
  std::unique_ptr<Defaults> defaults_ = std::make_unique<JsonDefaults>(files_, directory_ / "defaults.json");
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, DefaultsContract, LinuxDefaults);

// Qt's event loop. No method waits for ever.
class EventLoop {
 public:
  void run(Duration time = 20ms) {
    const auto end = std::chrono::steady_clock::now() + time;
    do QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    while (std::chrono::steady_clock::now() < end);
  }
  bool runUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!condition() && std::chrono::steady_clock::now() < deadline)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return condition();
  }

 private:
  TestApplication application_;
};

class LinuxMainQueue : public EventLoop {
 public:
  void addFile(const std::string& name) const { directory_.write(name, "x"); }
  void removeFolder() const { std::filesystem::remove_all(folder); }

 private:
  TemporaryDirectory directory_;

 public:
  QtMainQueue queue;
  std::filesystem::path folder = directory_.path();
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, MainQueueContract, LinuxMainQueue);

struct LinuxClock {
  Environment environment{{"LC_ALL", "en_US.UTF-8"}, {"TZ", "UTC"}};
  SystemClock clock;
  IcuDateFormatter dates;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, ClockContract, LinuxClock);

// Starts shells. Each writes its process id into a file before it does anything else.
class LinuxChildren : public EventLoop {
 public:
  std::unique_ptr<ChildProcess> start(const std::string& text, bool stays, ChildProcesses::Launch handlers) {
    handlers.executable = "/bin/sh";
    handlers.arguments = {"-c", "echo $$ > \"$0\"; printf %s \"$1\"; [ -z \"$2\" ] || exec sleep 1000",
                          directory_ / "pid", text, stays ? "stays" : ""};
    return children_.launch(std::move(handlers));
  }
  std::unique_ptr<ChildProcess> startMissing(ChildProcesses::Launch handlers) {
    handlers.executable = directory_ / "missing";
    return children_.launch(std::move(handlers));
  }
  bool isRunning() const { return ::kill(std::stoi(directory_.read("pid")), 0) == 0; }

 private:
  TemporaryDirectory directory_;
  QtChildProcesses children_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, ChildProcessesContract, LinuxChildren);

struct LinuxProcesses {
  ProcFs processes;
  Pid parent = ::getppid(), child = ::getpid();
  Pid missing = 1 << 30;  // larger than the kernel's largest
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, ProcessTableContract, LinuxProcesses);

// A web site on this computer.
class LinuxWeb : public EventLoop {
 public:
  LinuxWeb() {
    server_.listen(QHostAddress::LocalHost);
    QObject::connect(&server_, &QTcpServer::newConnection, [this] {
      QTcpSocket* socket = server_.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
        asked_ += socket->readAll();
        if (!asked_.endsWith("\r\n\r\n") || !answer_) return;
        asked_.clear();
        socket->write("HTTP/1.1 " + QByteArray::number(answer_->status) +
                      " Status\r\nContent-Length: " + QByteArray::number(qsizetype(answer_->body.size())) + "\r\n\r\n" +
                      QByteArray::fromStdString(answer_->body));
        socket->disconnectFromHost();
      });
    });
  }
  std::string page(std::optional<HttpResponse> answer) {
    answer_ = std::move(answer);
    return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + "/";
  }

  LazyHttp http{std::filesystem::path(TOLLVANE_BUNDLE) / "TollvaneWeb.so"};

 private:
  QTcpServer server_;
  QByteArray asked_;
  std::optional<HttpResponse> answer_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, HttpContract, LinuxWeb);

class LinuxLogin {
 public:
  void refuse() { directory_.write("config", "a file, where a folder is wanted"); }
  void turnOff() {
    directory_.write("config/autostart/tollvane.desktop",
                     directory_.read("config/autostart/tollvane.desktop") + "\nHidden=true\n");
  }

 private:
  TemporaryDirectory directory_;
  PosixFiles files_;

 public:
  AutostartLogin login{files_, directory_ / "config", "/opt/Tollvane/Tollvane"};
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, LoginContract, LinuxLogin);

class LinuxBundle {
 public:
  LinuxBundle() {
    directory_.write("Info.json", R"({"Version": "1.2", "Number": 7, "List": ["a", 7, "b"]})");
    directory_.write("Helper", "#!/bin/sh\n");
    std::filesystem::permissions(directory_ / "Helper", std::filesystem::perms::owner_all);
    directory_.write("Data", "");
    std::filesystem::create_directory(directory_ / "Folder");
    made_ = std::make_unique<ExecutableBundle>(directory_.path());
  }
  const Bundle& bundle() const { return *made_; }

 private:
  TemporaryDirectory directory_;
  std::unique_ptr<ExecutableBundle> made_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, BundleContract, LinuxBundle);

}  // namespace
}  // namespace tollvane::test
