// Learns of newer releases from a small document on Tollvane's site. Nothing is downloaded or installed. A check that
// fails changes nothing and is not told to anybody. Main thread only.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "model/paths.h"
#include "model/prefs.h"
#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/clock.h"
#include "platform/http.h"
#include "support/liveness.h"
#include "update/release.h"

namespace tollvane {

class Updater {
 public:
  static constexpr std::chrono::seconds patience{20};
  static constexpr std::chrono::hours interval{24};  // between checks, once a release is known

  Updater(Http& http, const Clock& clock, Prefs prefs, const Bundle& bundle);

  std::optional<Release> latest;   // what the last successful check found
  std::function<void()> onChange;  // after each successful check

  // Of the running program; "0" when its bundle does not say.
  std::string current() const;

  // The latest release, if it is newer than the running program.
  std::optional<Release> available() const;

  // What a user who asked for updates is told, `answerDelay` after the question: what has become known by then.
  static constexpr std::chrono::seconds answerDelay{4};
  Alert alert() const;

  // Asks the site; returns at once. While an answer is awaited, it does nothing.
  void check();

  // Whether this build names a site that could be asked. If not, nothing is ever sent.
  bool canAsk() const { return hasSite(bundle_); }

  // Asks the site if no release is known yet, or if the last check was more than a day ago.
  void checkIfDue();

 private:
  void answered(const HttpResponse& response);

  Http& http_;
  const Clock& clock_;
  Prefs prefs_;
  const Bundle& bundle_;
  bool asking_ = false;
  Liveness alive_;
};

}  // namespace tollvane
