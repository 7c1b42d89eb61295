// The questions which tab is audible that are not answered yet. Each goes to the extensions of all profiles of a
// browser, and only all their answers together tell: another profile's tab may have made the sound as well. Main thread
// only.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "support/liveness.h"

namespace tollvane {

// What the profiles of a browser answer together.
struct AudibleTabs {
  int count = 0;
  std::shared_ptr<const Message> only;  // the report of the tab; null unless `count` is 1
};

class AudibleQuestions {
 public:
  using Completion = std::function<void(const AudibleTabs& tabs)>;
  using Extensions = std::vector<std::shared_ptr<BrowserConnection>>;

  // An answer is worth nothing any more after this time.
  static constexpr std::chrono::milliseconds patience{2500};

  explicit AudibleQuestions(MainQueue& queue) : queue_(queue) {}

  // Asks each of `extensions`. `completion`, which may be empty, is called once if all of them answer, and otherwise
  // never.
  void ask(const Extensions& extensions, Completion completion);

  // To be called with each message that may be an answer. Returns whether it is one, even if nobody waits for it.
  bool answered(const BrowserConnection& from, const Message& message);

  // To be called when a connection is closed: its extension will not answer any more.
  void closed(const BrowserConnection& connection);

 private:
  struct Question {
    Extensions unanswered;
    AudibleTabs tabs;
    Completion completion;
  };

  MainQueue& queue_;
  std::deque<std::shared_ptr<Question>> open_;  // the oldest first
  Liveness alive_;
};

}  // namespace tollvane
