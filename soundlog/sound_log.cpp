#include "soundlog/sound_log.h"

#include <chrono>
#include <utility>

namespace tollvane::soundlog {

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
          environment, [this](const ClientClaims& claims) { return makers_.remember(claims); },
          [this](const StreamStart& start) { soundStarted(start); }) {
  const auto bus = sessionBus(environment);
  if (!bus) return;
  notifications_.emplace(bus->address,
                         NotificationSource::Events{
                             .presented = [this](const Notice& notice,
                                                 std::optional<Pid> sender) { notificationPresented(notice, sender); },
                             .serviceChanged = [this](std::optional<Pid> pid) { service_.setOwner(pid); },
                             .served = [this] { busLink_->served(); },
                             .ended = [this](bool served) { busLink_->ended(served); },
                         });
  busLink_.emplace(bus->socket, [this] { return notifications_->connect(); });
}

void SoundLog::start() {
  watchOutput();
  if (busLink_) busLink_->start();
  servers_.start();
}

void SoundLog::soundStarted(const StreamStart& start) {
  Happening happening;
  happening.kind = service_.plays(start.maker) ? Kind::notificationSound
                   : start.alert               ? Kind::alertRequested
                                               : Kind::outputStarted;
  happening.name = start.maker.name;
  std::string who = std::to_string(static_cast<int>(happening.kind)) + ' ';
  if (start.maker.known()) {
    const ProcessKey& process = start.maker.process();
    who += std::to_string(process.pid) + ' ' + std::to_string(process.startTime);
  } else {
    who += start.maker.name;
  }
  if (merger_.merges(who, std::chrono::steady_clock::now())) return;
  write(std::move(happening), start.maker);
}

void SoundLog::notificationPresented(const Notice& notice, std::optional<Pid> sender) {
  // This notification asks the service to stay silent, so the service's next sound belongs to another notification.
  if (notice.playsItself) return;
  write({Kind::notificationPresented, identities_.identify(notice, sender), 0}, {});
}

void SoundLog::write(Happening happening, Maker maker) {
  output_.push([this, happening = std::move(happening), maker = std::move(maker),
                time = std::chrono::system_clock::now()]() mutable {
    happening.pid = makers_.creditedPid(maker);
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
