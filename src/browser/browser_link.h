// Tollvane's side of the messages to and from its browser extensions: which of them are connected, and what is asked of
// them.
//
// There is one for the life of the process; its owner sets the callbacks once. Messages come over a socket from the
// bridges that browsers start, and from Safari through its inbox; handle() receives both. Nothing fails: a message that
// is not understood is ignored. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "browser/audible_questions.h"
#include "browser/bridge_listener.h"
#include "browser/browser_connection.h"
#include "browser/focus_requests.h"
#include "browser/native_hosts.h"
#include "browser/safari_inbox.h"
#include "model/paths.h"
#include "platform/bundle.h"
#include "platform/files.h"
#include "platform/locations.h"
#include "platform/main_queue.h"
#include "platform/safari_services.h"
#include "platform/workspace.h"
#include "support/liveness.h"

namespace tollvane {

class BrowserLink {
 public:
  static constexpr std::string_view safariExtensionID = "com.quarnel.tollvane.safari";
  static constexpr std::string_view safariMessageName = "tollvane";

  // All arguments must outlive the link.
  BrowserLink(MainQueue& queue, SafariServices& safari, Files& files, const Locations& locations, const Bundle& bundle,
              const Workspace& workspace, const Paths& paths);
  ~BrowserLink();

  // Installs the manifests that let browsers start the bridge, and listens for messages.
  void start();

  // Closes all connections. To be called once, when the process is about to end.
  void stop();

  // Called with every report that a tab makes sound, except the answers to askWhichTabIsAudible().
  std::function<void(BrowserConnection& from, const Message& report)> onTab;

  // Called when the connections, or what is known about them, have changed.
  std::function<void()> onChange;

  // Returns the settings that are sent to every extension; by default none.
  std::function<Message()> settings;

  // In the order in which they were made, without Safari's.
  std::vector<std::shared_ptr<BrowserConnection>> connections;

  // Whether messages can be sent to Safari's extension.
  bool safariEnabled = false;
  BrowserConnection& safariConnection() { return *safari_; }

  // Handles one message of an extension or of its bridge.
  void handle(BrowserConnection& from, const Message& message);

  // Whether an extension of that browser is connected and has introduced itself.
  bool isConnected(Browser browser) const;

  // Asks every ready extension of that browser for its audible tabs. `completion`, which may be empty, is called at
  // most once, when all have answered. Safari's extension answers through `onTab` instead.
  void askWhichTabIsAudible(Browser in, AudibleQuestions::Completion completion = nullptr);

  // Asks the browser to bring a tab forward: first the profile whose extension reported the tab, then the others.
  // `completion` is called exactly once, perhaps before this returns.
  void focus(std::int64_t tabId, Browser in, FocusRequests::Completion completion);

  // Sends the current settings to every ready extension.
  void broadcastSettings();

  // Asks Safari whether the extension is turned on. `completion` may be empty.
  void refreshSafariState(std::function<void()> completion);
  void openSafariExtensionSettings();

 private:
  class SafariConnection;

  void accept(LocalStream stream);
  void hello(BrowserConnection& from, const Message& message);
  void audible(BrowserConnection& from, const Message& message);
  std::vector<std::shared_ptr<BrowserConnection>> ready(Browser browser) const;
  Message settingsMessage() const;
  void changed() const {
    if (onChange) onChange();
  }

  MainQueue& queue_;
  SafariServices& safariServices_;
  const Locations& locations_;
  const Paths& paths_;
  NativeHosts nativeHosts_;
  SafariInbox inbox_;
  BridgeListener listener_;
  BridgeListener localListener_;  // for a home that can hold no socket, or that another computer uses as well
  std::shared_ptr<BrowserConnection> safari_;
  FocusRequests focusRequests_;
  AudibleQuestions audibleQuestions_;
  Liveness alive_;
};

}  // namespace tollvane
