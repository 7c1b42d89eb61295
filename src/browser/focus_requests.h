// The requests to bring a tab forward that are not answered yet. Each is put to the extensions of a browser's profiles
// one after the other, until one of them has the tab. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "support/liveness.h"

namespace tollvane {

// The result of bringing a tab forward.
enum class FocusResult {
  focused,
  tabClosed,    // the browser has no such tab any more
  unreachable,  // an extension that could have had the tab could not be asked, or did not answer
};

class FocusRequests {
 public:
  // `bundleID`: of the edition of the browser that brought the tab forward; empty if none did.
  using Completion = std::function<void(FocusResult result, std::string_view bundleID)>;
  using Extensions = std::vector<std::shared_ptr<BrowserConnection>>;

  // How long all extensions together may take to answer.
  static constexpr std::chrono::milliseconds patience{2500};

  explicit FocusRequests(MainQueue& queue) : queue_(queue) {}

  // Asks the first of `extensions`. `completion` is called exactly once, perhaps before this returns.
  void ask(std::int64_t tabId, Extensions extensions, Completion completion);

  // To be called with each answer. An answer counts only if it comes from the extension that was asked.
  void answered(const BrowserConnection& from, const Message& answer);

  // To be called when a connection is closed: its extension will not answer any more.
  void closed(const BrowserConnection& connection);

 private:
  struct Request {
    std::int64_t tabId = 0;
    Extensions extensions;    // the one that was asked last is first, behind it are those that are still to be asked
    bool incomplete = false;  // an extension went away before it answered
    Completion completion;
  };

  void askFirst(std::int64_t number);
  void askNext(std::int64_t number);
  void finish(std::int64_t number, FocusResult result, std::string_view bundleID = "");

  MainQueue& queue_;
  std::map<std::int64_t, Request> pending_;  // the key is the number of the request
  std::int64_t nextNumber_ = 1;
  Liveness alive_;
};

}  // namespace tollvane
