#include "soundlog/sound_log.h"

#include <chrono>
#include <utility>

namespace tollvane::soundlog {
namespace {

// Measured: at most 31 ms, by espeak's library, by speech-dispatcher 0.11, and by the player that a module starts.
constexpr Duration longestTrial = std::chrono::milliseconds(150);

// The service needs up to three seconds from its start to its first sentence.
constexpr Duration shortestSpeechPause = std::chrono::seconds(5);

constexpr Duration betweenLooks = std::chrono::milliseconds(5);

constexpr std::size_t mostWaits = 512;

// A sound server that starts, or starts anew, is not missing.
constexpr Duration longestServerStart = std::chrono::seconds(5);

}  // namespace

SoundLog::SoundLog(int output, Format format, const Environment& environment, Identities::Lookup applications,
                   Makers::NameOfApplication nameOfApplication, std::function<void()> ended)
    : makers_(processes_, std::move(nameOfApplication)),
      identities_(makers_, std::move(applications)),
      service_(processes_, makers_),
      output_(output),
      descriptor_(output),
      format_(format),
      ended_(std::move(ended)),
      servers_(
          environment, processes_, [this](const ClientClaims& claims) { return makers_.remember(claims); },
          [this](const StreamStart& start) { streamStarted(start); }, [this] { serversChanged(); }) {
  const auto bus = sessionBus(environment);
  if (!bus) return;
  notifications_.emplace(bus->address,
                         NotificationSource::Events{
                             .presented = [this](const Notice& notice,
                                                 std::optional<Pid> sender) { notificationPresented(notice, sender); },
                             .serviceChanged = [this](std::optional<Pid> pid) { service_.setOwner(pid); },
                             .received = [this](Pid pid) { service_.received(pid, std::chrono::steady_clock::now()); },
                             .served = [this] { busLink_->served(); },
                             .ended = [this](bool served) { busLink_->ended(served); },
                         });
  busLink_.emplace(bus->socket, [this] { return notifications_->connect(); });
}

void SoundLog::start() {
  watchOutput();
  if (busLink_) busLink_->start();
  servers_.start();
  serversChanged();
}

void SoundLog::serversChanged() {
  if (servers_.isServed()) {
    serverDoubt_ = {};
    if (std::exchange(toldOfNoServer_, false)) write({Kind::serverFound, "", 0}, {});
  } else if (!toldOfNoServer_ && !serverDoubt_.active()) {
    serverDoubt_ = callAfter(longestServerStart, [this] {
      toldOfNoServer_ = true;
      write({Kind::serverMissing, "", 0}, {});
    });
  }
}

void SoundLog::streamStarted(const StreamStart& start) {
  start.maker.speech == Speech::none ? soundStarted(start) : speechStarted(start);
}

// The service and its modules try the sound server when they start, and before each sentence. What anyone can hear runs
// longer than that, and a sentence is one sound, however many of them have a part in it.
void SoundLog::speechStarted(const StreamStart& start) {
  if (start.maker.speech == Speech::mute) return;
  later(longestTrial, [this, runs = start.runs] {
    if (runs && !runs()) return;
    if (merger_.merges("speech", std::chrono::steady_clock::now(), shortestSpeechPause)) return;
    write({Kind::outputStarted, "Speech", 0}, {});
  });
}

// Whether a sound is a notification's, and whose, may depend on an answer of the bus. Usually it came long before.
void SoundLog::soundStarted(const StreamStart& start, int looks) {
  if (looks == 0 || !notifications_ || !notifications_->isAsking()) return soundSettled(start);
  later(betweenLooks, [this, start, looks] { soundStarted(start, looks - 1); });
}

void SoundLog::later(Duration delay, std::function<void()> work) {
  while (!waits_.empty() && (!waits_.front().active() || waits_.size() >= mostWaits)) waits_.pop_front();
  waits_.push_back(callAfter(delay, std::move(work)));
}

void SoundLog::soundSettled(const StreamStart& start) {
  const Instant now = std::chrono::steady_clock::now();
  Happening happening;
  happening.kind = service_.plays(start.maker, now) ? Kind::notificationSound
                   : start.alert                    ? Kind::alertRequested
                                                    : Kind::outputStarted;
  happening.name = start.maker.name;
  happening.script = start.maker.script;
  std::string who = std::to_string(static_cast<int>(happening.kind)) + ' ';
  if (start.maker.known()) {
    const ProcessKey& process = start.maker.process();
    who += std::to_string(process.pid) + ' ' + std::to_string(process.startTime);
  } else {
    who += start.maker.name;
  }
  if (merger_.merges(who, now)) return;
  if (happening.kind == Kind::notificationSound) {
    if (const auto identity = notices_.presentAgainFor(start.maker, now))
      write({Kind::notificationPresented, *identity, 0}, {});
  }
  write(std::move(happening), start.maker);
}

void SoundLog::notificationPresented(const Notice& notice, std::optional<Pid> sender) {
  // Also if it asks the service to stay silent: if the service rings all the same, it rings for this one.
  const std::string identity = identities_.identify(notice, sender);
  notices_.presented(notice, identity, std::chrono::steady_clock::now());
  write({Kind::notificationPresented, identity, 0}, {});
}

void SoundLog::write(Happening happening, Maker maker) {
  output_.push([this, happening = std::move(happening), maker = std::move(maker),
                time = std::chrono::system_clock::now()]() mutable {
    happening.ancestors = makers_.stillRunning(maker);
    happening.pid = happening.ancestors.empty() ? 0 : happening.ancestors.front();
    if (!happening.ancestors.empty()) happening.ancestors.erase(happening.ancestors.begin());
    return format_(happening, time);
  });
  if (output_.pending() != waiting_ || output_.broken()) watchOutput();
}

// This watch notices that the reader has gone away even if nothing is written.
void SoundLog::watchOutput() {
  waiting_ = output_.pending();
  const int conditions = G_IO_ERR | G_IO_HUP | (waiting_ || output_.broken() ? G_IO_OUT : 0);
  outputWatch_ = watchDescriptor(descriptor_, static_cast<GIOCondition>(conditions), [this](GIOCondition now) {
    if (now & (G_IO_ERR | G_IO_HUP | G_IO_NVAL) || output_.broken()) return ended_();
    output_.flush();
    if (output_.broken()) return ended_();
    if (!output_.pending()) watchOutput();
  });
}

}  // namespace tollvane::soundlog
