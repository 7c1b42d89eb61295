// Each call that the system may refuse is refused once, the first, the second and so on, until a whole run was not
// disturbed. Nothing that was stored may be lost or half written, and what failed works when it is done again.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <algorithm>
#include <functional>
#include <sstream>

#include "app/history.h"
#include "browser/bridge_listener.h"
#include "browser/native_hosts.h"
#include "platform/linux/kernel/write_watch.h"
#include "platform/linux/session/autostart_login.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/linux/system/qt_child_processes.h"
#include "platform/posix/path_watch.h"
#include "platform/posix/posix_files.h"
#include "support/json.h"
#include "support/json_value.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::IsEmpty;
namespace fs = std::filesystem;

using FailNth = void (*)(const char* call, int n);
using CallsSeen = int (*)();

const std::vector<const char*> fileCalls = {"open",  "write", "half write", "rename", "fsync",
                                            "mkdir", "chmod", "ftruncate",  "unlink"};
const std::vector<const char*> socketCalls = {"socket", "bind", "listen", "chmod", "unlink", "accept", "mkdir"};

class FaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    failNth_ = reinterpret_cast<FailNth>(::dlsym(RTLD_DEFAULT, "failNth"));
    callsSeen_ = reinterpret_cast<CallsSeen>(::dlsym(RTLD_DEFAULT, "callsSeen"));
    ASSERT_TRUE(failNth_ && callsSeen_) << "the library fail_nth is not preloaded; ctest does that";
  }

  // `run` is given a new folder and whatever it wraps in disturbed() meets the failures.
  void forEveryFailure(const std::vector<const char*>& calls, const std::function<void()>& run) {
    std::size_t failures = 0;
    for (const char* call : calls) {
      for (call_ = call, n_ = 1;; ++n_) {
        SCOPED_TRACE(std::string(call) + " fails at call " + std::to_string(n_));
        directory = std::make_unique<test::TemporaryDirectory>();
        seen_ = 0;
        run();
        if (HasFailure()) return;
        if (seen_ < n_) break;
        ++failures;
        ASSERT_LT(n_, 1000) << "it never ends";
      }
    }
    EXPECT_GT(failures, 0u) << "nothing was disturbed";
  }

  void disturbed(const std::function<void()>& action) {
    failNth_(call_, n_);
    action();
    seen_ += callsSeen_();
    failNth_("", 0);
  }
  bool wasDisturbed() const { return seen_ >= n_; }

  // The names of the files below the folder, without those in `expected`.
  std::vector<std::string> filesBeside(const std::vector<std::string>& expected) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(directory->path())) {
      const auto name = fs::relative(entry.path(), directory->path()).string();
      if (!entry.is_directory() && std::ranges::count(expected, name) == 0) names.push_back(name);
    }
    return names;
  }

  std::unique_ptr<test::TemporaryDirectory> directory;
  PosixFiles files;

 private:
  FailNth failNth_ = nullptr;
  CallsSeen callsSeen_ = nullptr;
  const char* call_ = "";
  int n_ = 0;
  int seen_ = 0;
};

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST_F(FaultsTest, TheHistoryLosesAtMostTheLineThatIsBeingWritten) {
  for (const bool isNew : {false, true}) {
    forEveryFailure(fileCalls, [&] {
      const std::string earlier = isNew ? "" : "first\nsecond\n";
      if (!isNew) directory->write("Tollvane/history.txt", earlier);
      test::VirtualPlatform system;
      system.locations.support = directory->path();
      const Paths paths(system.locations, files);
      History history(paths, files, system.dates);
      disturbed([&] {
        for (const auto* app : {"a", "b", "c"}) history.append({system.clock.now(), app, kind::alertSound});
      });
      history.append({system.clock.now(), "d", kind::alertSound});

      // What could not be opened was set aside, and counts.
      std::string all;
      for (const auto& name : filesBeside({})) {
        ASSERT_THAT(name, testing::StartsWith("Tollvane/history"));
        const std::string text = directory->read(name);
        ASSERT_TRUE(text.empty() || text.ends_with('\n')) << name << ":\n" << text;
        all += text;
      }
      std::size_t kept = 0;
      for (const auto* app : {"a", "b", "c", "d"})
        kept += std::ranges::count(linesOf(all), "2025-01-31 14:05:09\t" + std::string(app) + "\talert sound\t");
      EXPECT_GE(kept, 3u) << all;
      for (const auto& line : linesOf(earlier)) EXPECT_EQ(std::ranges::count(linesOf(all), line), 1) << all;
      EXPECT_EQ(linesOf(all).size(), kept + linesOf(earlier).size()) << all;
    });
  }
}

TEST_F(FaultsTest, StoredSettingsKeepWhatTheyHadAndTakeTheNextChange) {
  forEveryFailure(fileCalls, [&] {
    directory->write("Tollvane/settings.json", R"({"own": [1, 2], "markTabs": false})");
    const auto file = *directory / "Tollvane/settings.json";
    JsonDefaults defaults(files, file);
    disturbed([&] {
      defaults.set("markTabs", true);
      defaults.set("lastCheck", 5.5);
    });
    const auto stored = json::object(directory->read("Tollvane/settings.json"));
    ASSERT_TRUE(stored);
    EXPECT_EQ((*stored)["own"], nlohmann::json({1, 2}));
    JsonDefaults(files, file).set("later", true);
    const auto after = json::object(directory->read("Tollvane/settings.json"));
    ASSERT_TRUE(after);
    EXPECT_EQ((*after)["own"], nlohmann::json({1, 2}));
    EXPECT_EQ((*after)["later"], true);
  });
}

TEST_F(FaultsTest, TheLoginEntryIsTheOldOneOrTheNewOneAndTheSentenceSaysWhich) {
  forEveryFailure(fileCalls, [&] {
    const AutostartLogin earlier(files, directory->path() / "config", "/old/Tollvane");
    AutostartLogin login(files, directory->path() / "config", "/new/Tollvane");
    AutostartLogin(files, directory->path() / "config", "/old/Tollvane").registerApplication(AskedBy::user);
    std::optional<std::string> sentence;
    disturbed([&] { sentence = login.registerApplication(AskedBy::user); });
    EXPECT_EQ(login.status() == LoginStatus::enabled, !sentence);
    EXPECT_EQ(earlier.status() == LoginStatus::enabled, sentence.has_value());
    EXPECT_THAT(sentence.value_or("none."), testing::EndsWith("."));
    EXPECT_EQ(login.registerApplication(AskedBy::user), std::nullopt);
    EXPECT_EQ(login.status(), LoginStatus::enabled);

    disturbed([&] { sentence = login.unregisterApplication(); });
    EXPECT_EQ(login.status() == LoginStatus::enabled, sentence.has_value());
    EXPECT_EQ(login.unregisterApplication(), std::nullopt);
    EXPECT_THAT(filesBeside({}), Each(testing::ContainsRegex("desktop\\.......$"))) << "only what unlink left behind";
  });
}

TEST_F(FaultsTest, AFirstLoginEntryIsWholeOrMissing) {
  forEveryFailure(fileCalls, [&] {
    AutostartLogin login(files, directory->path() / "config", "/new/Tollvane");
    std::optional<std::string> sentence;
    disturbed([&] { sentence = login.registerApplication(AskedBy::program); });
    EXPECT_EQ(login.status(), sentence ? LoginStatus::notRegistered : LoginStatus::enabled);
    EXPECT_EQ(files.exists(directory->path() / "config/autostart/tollvane.desktop"), !sentence);
  });
}

// A bundle in a folder, with a bridge in it.
class FolderBundle : public test::VirtualBundle {
 public:
  explicit FolderBundle(fs::path bridge) : bridge_(std::move(bridge)) {}
  std::optional<fs::path> auxiliaryExecutable(std::string_view) const override { return bridge_; }

 private:
  fs::path bridge_;
};

TEST_F(FaultsTest, AManifestNamesAWholeBridgeAndIsNeverHalfWritten) {
  const std::string oldBridge(200'000, 'o'), newBridge(200'000, 'n');
  forEveryFailure(fileCalls, [&] {
    test::VirtualPlatform system;
    system.locations.support = directory->path();
    system.locations.nativeHosts = {{"com.google.Chrome", "chrome/hosts"}, {"org.mozilla.firefox", "mozilla/hosts"}};
    const auto bridgeFile = *directory / "bundle/TollvaneBridge";
    const FolderBundle bundle(bridgeFile);
    const Paths paths(system.locations, files);
    NativeHosts hosts(files, system.locations, bundle, system.workspace, paths);
    fs::create_directories(*directory / "chrome");
    fs::create_directories(*directory / "mozilla");
    const auto install = [&](const std::string& bridge) {
      directory->write("bundle/TollvaneBridge", bridge);
      fs::permissions(bridgeFile, fs::perms::owner_all);
      disturbed([&] { hosts.installManifests(); });
    };
    const std::vector<std::string> manifests = {"chrome/hosts/com.quarnel.tollvane.json",
                                                "mozilla/hosts/com.quarnel.tollvane.json"};
    const auto check = [&](bool mayBeMissing) {
      for (const auto& each : manifests) {
        if (mayBeMissing && !files.exists(*directory / each)) continue;
        const auto manifest = json::object(directory->read(each));
        ASSERT_TRUE(manifest) << each << ": " << directory->read(each);
        const auto named = files.read((*manifest)["path"].get<std::string>(), 1 << 20);
        ASSERT_TRUE(named);
        ASSERT_TRUE(*named == oldBridge || *named == newBridge) << "half a bridge";
      }
    };
    install(oldBridge);
    check(true);
    if (!wasDisturbed()) {
      install(newBridge);
      check(false);
    }
    hosts.installManifests();
    check(false);
    const auto installed = hosts.installedBridgePath();
    EXPECT_EQ(installed, (*directory / "Tollvane/bin/TollvaneBridge").string());
    EXPECT_EQ(files.read(*installed, 1 << 20), files.read(bridgeFile, 1 << 20));
  });
}

class Caller {
 public:
  explicit Caller(const std::string& path) : stream(LocalStream::to(path)) {}
  LocalStream stream;
};

TEST_F(FaultsTest, TheSocketIsOpenAfterAWhileWhateverFailedAtFirst) {
  forEveryFailure(socketCalls, [&] {
    test::VirtualPlatform system;
    const auto path = (*directory / "Tollvane/bridge.sock").string();
    directory->write("Tollvane/bridge.sock", "left behind by a crash");
    BridgeListener listener(system.queue, files);
    std::vector<LocalStream> bridges;
    listener.onConnection = [&](LocalStream stream) { bridges.push_back(std::move(stream)); };
    disturbed([&] { listener.open(path); });
    system.queue.advance(30s);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);

    const Caller caller(path);
    ASSERT_TRUE(caller.stream);
    disturbed([&] { system.queue.pollDescriptors(); });
    system.queue.advance(30s);
    system.queue.drainDescriptors();
    EXPECT_EQ(bridges.size(), 1u) << "the bridge that called is heard";
    listener.close();
    EXPECT_FALSE(files.exists(path));
  });
}

TEST_F(FaultsTest, ACallerWhoseConnectionFailsIsToldSoAndCanCallAgain) {
  forEveryFailure({"socket", "connect"}, [&] {
    const auto path = (*directory / "bridge.sock").string();
    const auto listener = LocalListener::at(path);
    ASSERT_TRUE(listener);
    bool connected = false;
    disturbed([&] { connected = static_cast<bool>(LocalStream::to(path)); });
    EXPECT_EQ(connected, !wasDisturbed());
    EXPECT_TRUE(LocalStream::to(path));
  });
}

TEST_F(FaultsTest, AWatchThatTheKernelRefusesSaysSo) {
  forEveryFailure({"inotify_init", "inotify_add_watch"}, [&] {
    std::unique_ptr<PathWatch> watch;
    std::unique_ptr<WriteWatch> writes;
    directory->write("folder/file", "");
    disturbed([&] {
      watch = std::make_unique<PathWatch>(*directory / "missing/file");
      writes = std::make_unique<WriteWatch>();
      writes->add(*directory / "folder");
    });
    directory->write("missing/file", "");
    directory->write("folder/file", "more");
    EXPECT_TRUE(!watch->watching() || watch->appeared());
    EXPECT_TRUE(!writes->isComplete() || writes->takeWrites());
    EXPECT_TRUE(wasDisturbed() || (watch->watching() && writes->isComplete()));
  });
}

TEST_F(FaultsTest, AProgramThatCannotBeStartedLeavesNothingBehind) {
  int count = 1;
  char name[] = "faults_test";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  for (const char* call : {"pipe", "fork", "exec"}) {
    forEveryFailure({call}, [&] {
      QtChildProcesses children;
      bool ended = false;
      std::unique_ptr<ChildProcess> child;
      disturbed([&] {
        child = children.launch({.executable = "/bin/true",
                                 .arguments = {},
                                 .onOutput = [](std::string_view) {},
                                 .onTermination = [&] { ended = true; }});
      });
      EXPECT_EQ(child == nullptr, wasDisturbed());
      while (child && !ended) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
      child.reset();
      EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left over";
    });
  }
}

}  // namespace
}  // namespace tollvane
