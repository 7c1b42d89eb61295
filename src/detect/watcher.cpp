#include "detect/watcher.h"

#include <algorithm>
#include <utility>

namespace tollvane {
namespace {

// What the log tool is asked for: the messages that sound_message.h knows, and as little else as possible.
constexpr const char* predicate =
    R"((process == "audiomxd" AND eventMessage CONTAINS "update_running_state") OR )"
    R"((process == "systemsoundserverd" AND eventMessage CONTAINS "Incoming Request") OR )"
    R"((process == "usernoted" AND (eventMessage CONTAINS "Request: Starting" OR )"
    R"(eventMessage CONTAINS "Presenting <NotificationRecord")))";

// No working log tool prints such a line, and a broken one must not fill the memory.
constexpr std::size_t longestLine = 1 << 24;

// A large read is split into pieces of this size, so that their lines are still in the processor's cache when they are
// read.
constexpr std::size_t mostAtOnce = 1 << 16;

// How many (application, kind) pairs are remembered before those that can no longer suppress a repeat are dropped. A
// name longer than longName drops them at once.
constexpr std::size_t usualRepeats = 1024;
constexpr std::size_t longName = 4096;

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace

Watcher::Watcher(MainQueue& queue, const Clock& clock, ChildProcesses& children, const Bundle& bundle,
                 const Resolver& resolver)
    : queue_(queue),
      clock_(clock),
      children_(children),
      bundle_(bundle),
      resolver_(resolver),
      buffer_(longestLine),
      mostSeen_(usualRepeats) {}

Hearing Watcher::hearing() const {
  if (tool_ != Tool::runs) return Hearing::noLogTool;
  return soundServer_ ? Hearing::yes : Hearing::noSoundServer;
}

void Watcher::toolIs(Tool state) {
  const Hearing before = hearing();
  tool_ = state;
  if (state != Tool::runs) soundServer_ = true;  // until the next run says otherwise
  if (hearing() != before && onHearingChange) onHearingChange();
}

void Watcher::start() {
  stopped_ = false;
  const int run = ++run_;
  // What the last run left in the buffer stays: it is joined with the first bytes of the new run.
  process_ = children_.launch({
      .executable = bundle_.logTool(),
      .arguments = {"stream", "--style", "ndjson", "--predicate", predicate},
      .onOutput = alive_.guard([this](std::string_view bytes) { receive(bytes); }),
      .onTermination = alive_.guard([this] {
        ++run_;
        toolIs(Tool::ended);
        startLater(restartDelay);
      }),
  });
  if (!process_) {
    toolIs(Tool::ended);
    startLater(pause_);
    pause_ = std::min(2 * pause_, longestRestartDelay);
    return;
  }
  pause_ = restartDelay;
  // A tool that ends at once, again and again, does not hear anything.
  if (tool_ == Tool::runs) return;
  toolIs(Tool::onTrial);
  queue_.after(restartDelay, alive_.guard([this, run] {
    if (run == run_) toolIs(Tool::runs);
  }));
}

void Watcher::startLater(Duration delay) {
  queue_.after(delay, alive_.guard([this] {
    if (!stopped_) start();
  }));
}

void Watcher::stop() {
  stopped_ = true;
  if (!process_) return;
  process_->removeTerminationHandler();
  process_->terminate();
}

void Watcher::receive(std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), mostAtOnce))) {
    buffer_.append(bytes.substr(0, mostAtOnce));
    while (const auto line = buffer_.next()) readLine(*line);
  }
}

void Watcher::readLine(std::string_view line) {
  if (!mayHoldSoundMessage(line)) return;  // true of most lines
  const auto read = reader_.read(line);
  if (!read) return;
  if (const auto found = soundMessage(read->process, read->message)) handle(*found, *read);
}

void Watcher::handle(const SoundMessage& message, const LogLine& line) {
  const auto emitSound = [&](const auto& sound, std::string_view kind) {
    const Pid maker = resolver_.living(sound.pid, line.ancestors);
    auto application = resolver_.regularApp(maker);
    std::string name = resolver_.appName(maker, line.maker.empty() ? sound.name : line.maker, application);
    emit(std::move(name), kind, std::move(application));
  };
  std::visit(Overloaded{
                 [&](const NotificationPresented& notification) {
                   // It becomes a sound only if the sound server reports one.
                   lastNotification_ = {std::string(notification.bundleID), clock_.steadyNow()};
                 },
                 [&](const NotificationSoundRequested&) { emit(notifyingApp(), kind::notificationSound); },
                 [&](const AlertSoundRequested& alert) { emitSound(alert, kind::alertSound); },
                 [&](const AudioOutputStarted& start) { emitSound(start, kind::startedPlayingAudio); },
                 [&](const SoundServerReport& report) {
                   const bool changes = std::exchange(soundServer_, report.found) != report.found;
                   if (changes && onHearingChange) onHearingChange();
                 },
             },
             message);
}

std::string Watcher::notifyingApp() const {
  const bool recent = lastNotification_ && clock_.steadyNow() - lastNotification_->date < notificationWindow;
  return recent ? resolver_.appName(lastNotification_->bundleID) : "Notification Center";
}

void Watcher::emit(std::string app, std::string_view kind, std::optional<RunningApplication> maker) {
  const Instant now = clock_.steadyNow();
  std::string key = app + "|";
  key += kind;
  const auto [seen, isNew] = lastSeen_.try_emplace(std::move(key), now);
  if (!isNew) {
    if (now - seen->second < repeatWindow) return;  // the old time stays: a steady stream comes through now and then
    seen->second = now;
  }
  if (lastSeen_.size() > mostSeen_ || app.size() > longName) forgetOldRepeats(now);
  if (!onEvent) return;
  auto event = std::make_shared<SoundEvent>(clock_.now(), app, kind);
  if (maker) event->maker = resolver_.mainProcess(*std::move(maker));
  onEvent(std::move(event));
}

void Watcher::forgetOldRepeats(Instant now) {
  std::erase_if(lastSeen_, [&](const auto& entry) { return now - entry.second >= repeatWindow; });
  mostSeen_ = std::max(usualRepeats, 2 * lastSeen_.size());
}

}  // namespace tollvane
