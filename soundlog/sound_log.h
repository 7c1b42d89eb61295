// TollvaneLog as a whole: listens to the sound server and to the session bus, decides what each thing heard is, and
// writes lines until its reader is gone. Main thread only.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "soundlog/connection/addresses.h"
#include "soundlog/connection/loop.h"
#include "soundlog/connection/reconnector.h"
#include "soundlog/lines.h"
#include "soundlog/makers/identity.h"
#include "soundlog/makers/maker.h"
#include "soundlog/notification_service.h"
#include "soundlog/notifications.h"
#include "soundlog/output_queue.h"
#include "soundlog/servers/sound_servers.h"
#include "soundlog/servers/stream_tracker.h"

namespace tollvane::soundlog {

class SoundLog {
 public:
  using Format = std::string (*)(const Happening&, TimePoint);

  // Writes to `output`, which stays the caller's. `ended` is called when its reader is gone.
  SoundLog(int output, Format format, const Environment& environment, Identities::Lookup applications,
           Makers::NameOfApplication nameOfApplication, std::function<void()> ended);

  void start();

 private:
  void streamStarted(const StreamStart& start);
  void speechStarted(const StreamStart& start);
  // A bus that has not answered after so many looks hangs.
  static constexpr int mostLooks = 20;

  void soundStarted(const StreamStart& start, int looks = mostLooks);
  void later(Duration delay, std::function<void()> work);
  void notificationPresented(const Notice& notice, std::optional<Pid> sender);
  void soundSettled(const StreamStart& start);
  void serversChanged();
  void write(Happening happening, Maker maker);
  void watchOutput();

  ProcFs processes_;
  Makers makers_;
  Identities identities_;
  NotificationService service_;
  RecentNotices notices_;
  StartMerger merger_;
  OutputQueue output_;
  int descriptor_;
  Format format_;
  std::function<void()> ended_;
  bool waiting_ = false;  // whether `outputWatch_` also waits for room
  Watch outputWatch_;
  std::deque<Watch> waits_;  // for work that is put off, the latest last
  SoundServers servers_;
  bool toldOfNoServer_ = false;
  Watch serverDoubt_;
  std::optional<NotificationSource> notifications_;  // absent if there is no session bus
  std::optional<Reconnector> busLink_;
};

}  // namespace tollvane::soundlog
