#include "tests/soundlog/running_log.h"

#include <re2/re2.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* notificationProbe = "probe-of-notifications";
constexpr const char* soundProbe = "probe-of-sounds";

}  // namespace

std::ostream& operator<<(std::ostream& out, const Heard& heard) {
  return out << heard.speaker << ' ' << heard.name << ' ' << heard.pid;
}

std::optional<Heard> understood(const std::string& line) {
  static const RE2 output(R"re("name":"([^"]*)\((\d+)\)")re");
  static const RE2 request(R"re(inClientPID (\d+)\(([^)]*)\))re");
  static const RE2 record(R"re(NotificationRecord app:"([^"]+)")re");
  const auto json = nlohmann::json::parse(line, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const std::string message = json.value("eventMessage", "");
  Heard heard;
  heard.speaker = std::filesystem::path(json.value("processImagePath", "")).filename().string();
  heard.ancestors = json.value("ancestors", std::vector<int>());
  const auto named = [&](Heard found) {
    found.name = json.value("makerName", found.name);
    return found;
  };
  const auto says = [&](const char* text) { return message.find(text) != std::string::npos; };
  if (heard.speaker == "audiomxd" && says("update_running_state") && says("\"output_running\":true") &&
      RE2::PartialMatch(message, output, &heard.name, &heard.pid)) {
    return named(heard);
  }
  if (heard.speaker == "systemsoundserverd" && says("Incoming Request") &&
      RE2::PartialMatch(message, request, &heard.pid, &heard.name)) {
    return named(heard);
  }
  if (heard.speaker == "usernoted" && says("Presenting <NotificationRecord") &&
      RE2::PartialMatch(message, record, &heard.name)) {
    return heard;
  }
  return std::nullopt;
}

RunningLog::RunningLog(const PrivateSound& sound)
    : sound_(sound),
      process_(sound.begin({TOLLVANE_LOG, "stream", "--style", "ndjson", "--predicate", "process == \"anything\""},
                           Process::Output::read)),
      reader_([this] { read(); }) {}

void RunningLog::read() {
  while (reading_) {
    auto line = process_->line(50ms);
    if (!line) continue;
    const std::lock_guard lock(mutex_);
    lines_.push_back(*std::move(line));
    arrived_.notify_one();
  }
}

void RunningLog::stopReading() {
  reading_ = false;
  if (reader_.joinable()) reader_.join();
}

void RunningLog::closeOutput() {
  stopReading();
  process_->closeOutput();
}

bool RunningLog::listens() {
  const auto until = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < until) {
    // This name is reported if the process ends too soon for its number.
    const auto probe = sound_.begin({"paplay", std::string("--client-name=") + soundProbe, sound_.tone(10ms)});
    probes_.push_back(probe->pid());
    if (probe->exitCode(5s) != 0) continue;
    while (const auto heard = nextOfAll(300ms)) {
      if (isProbe(*heard)) return true;
      kept_.push_back(*heard);
    }
  }
  return false;
}

bool RunningLog::seesNotifications() {
  const auto until = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < until) {
    notify(sound_, "", {"1", "desktop-entry", "s", notificationProbe});
    while (const auto heard = nextOfAll(300ms)) {
      if (heard->name == notificationProbe) return true;
      if (!isProbe(*heard)) kept_.push_back(*heard);
    }
  }
  return false;
}

std::optional<Heard> RunningLog::next(std::chrono::milliseconds deadline) {
  if (!kept_.empty()) {
    Heard first = kept_.front();
    kept_.pop_front();
    return first;
  }
  for (;;) {
    auto heard = nextOfAll(deadline);
    if (!heard || !isProbe(*heard)) return heard;
  }
}

bool RunningLog::isProbe(const Heard& heard) const {
  return heard.name == notificationProbe || heard.name == soundProbe ||
         std::find(probes_.begin(), probes_.end(), heard.pid) != probes_.end();
}

std::vector<Heard> RunningLog::heardSoFar() {
  const auto marker = sound_.begin({"paplay", sound_.tone(10ms)});
  std::vector<Heard> all;
  while (const auto heard = next()) {
    if (heard->pid == marker->pid()) return all;
    all.push_back(*heard);
  }
  all.push_back({"", "the marker was not heard", 0});
  return all;
}

std::optional<Heard> RunningLog::nextOfAll(std::chrono::milliseconds deadline) {
  std::unique_lock lock(mutex_);
  if (!arrived_.wait_for(lock, deadline, [this] { return !lines_.empty(); })) return std::nullopt;
  const std::string line = std::move(lines_.front());
  lines_.pop_front();
  return understood(line).value_or(Heard{"", "not understood: " + line, 0});
}

bool notify(const PrivateSound& sound, const std::string& applicationName, const std::vector<std::string>& hints) {
  std::vector<std::string> command = {"busctl",
                                      "--user",
                                      "--timeout=2",
                                      "call",
                                      "--",
                                      "org.freedesktop.Notifications",
                                      "/org/freedesktop/Notifications",
                                      "org.freedesktop.Notifications",
                                      "Notify",
                                      "susssasa{sv}i",
                                      applicationName,
                                      "0",
                                      "",
                                      "Summary",
                                      "Body",
                                      "0"};
  command.insert(command.end(), hints.begin(), hints.end());
  command.push_back("-1");
  return sound.play(command);
}

}  // namespace tollvane::test
