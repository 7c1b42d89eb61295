// Tollvane's only source of sounds: runs the log tool, reads its output, credits each sound to an application and
// passes it on.
//
//   watcher.onEvent = [&](std::shared_ptr<SoundEvent> event) { ... };
//   watcher.start();
//
// The log tool runs as long as the watcher does: 3 seconds after it has ended for any reason, it is started again. If
// it cannot be started at all, there is another try after 3 seconds, and then after pauses that double up to 5 minutes.
// Repeats of one application and kind within 1.5 seconds are one sound. Every failure is silent: a line that is no
// message about a sound is dropped, and the next line is read. Main thread only.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "detect/log_line.h"
#include "detect/resolver.h"
#include "detect/sound_message.h"
#include "model/sound_event.h"
#include "platform/bundle.h"
#include "platform/child_processes.h"
#include "platform/clock.h"
#include "platform/main_queue.h"
#include "support/line_buffer.h"
#include "support/liveness.h"

namespace tollvane {

// Whether sounds can be noticed at all.
enum class Hearing {
  yes,
  noLogTool,      // the log tool does not run: it cannot be started, or it has ended
  noSoundServer,  // it runs, and says that there is no sound server
};

class Watcher {
 public:
  static constexpr std::chrono::milliseconds restartDelay{3000};
  static constexpr std::chrono::milliseconds longestRestartDelay{300'000};
  static constexpr std::chrono::milliseconds repeatWindow{1500};
  static constexpr std::chrono::milliseconds notificationWindow{5000};

  Watcher(MainQueue& queue, const Clock& clock, ChildProcesses& children, const Bundle& bundle,
          const Resolver& resolver);

  // Receives every sound. While it is empty, sounds are lost.
  std::function<void(std::shared_ptr<SoundEvent>)> onEvent;

  // Called after each change of hearing().
  std::function<void()> onHearingChange;
  Hearing hearing() const;

  void start();

  // Ends the log tool and does not start it again.
  void stop();

 private:
  enum class Tool { ended, onTrial, runs };
  struct Notification {
    std::string bundleID;
    Instant date;
  };

  void toolIs(Tool state);
  void startLater(Duration delay);
  void receive(std::string_view bytes);
  void readLine(std::string_view line);
  void handle(const SoundMessage& message, const LogLine& line);
  std::string notifyingApp() const;
  void emit(std::string app, std::string_view kind, std::optional<RunningApplication> maker = std::nullopt);
  void forgetOldRepeats(Instant now);

  MainQueue& queue_;
  const Clock& clock_;
  ChildProcesses& children_;
  const Bundle& bundle_;
  const Resolver& resolver_;

  std::unique_ptr<ChildProcess> process_;
  bool stopped_ = false;
  Tool tool_ = Tool::runs;
  bool soundServer_ = true;
  std::chrono::milliseconds pause_ = restartDelay;  // before the next try if the log tool cannot be started
  int run_ = 0;
  LineBuffer buffer_;
  LogLineReader reader_;
  std::optional<Notification> lastNotification_;
  std::unordered_map<std::string, Instant> lastSeen_;  // the key is application, "|" and kind
  std::size_t mostSeen_;                               // the size at which old entries of lastSeen_ are dropped next
  Liveness alive_;
};

}  // namespace tollvane
