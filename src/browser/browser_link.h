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
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "browser/bridge_listener.h"
#include "browser/browser_connection.h"
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

// The result of bringing a tab forward.
enum class FocusResult {
  focused,
  tabClosed,    // the browser has no such tab any more
  unreachable,  // no extension could be asked, or none answered
};

class BrowserLink {
 public:
  static constexpr std::string_view safariExtensionID = "com.quarnel.tollvane.safari";
  static constexpr std::string_view safariMessageName = "tollvane";
  static constexpr std::chrono::milliseconds focusPatience{2500};

  // All arguments must outlive the link.
  BrowserLink(MainQueue& queue, SafariServices& safari, Files& files, const Locations& locations, const Bundle& bundle,
              const Workspace& workspace, const Paths& paths);
  ~BrowserLink();

  // Installs the manifests that let browsers start the bridge, and listens for messages.
  void start();

  // Closes all connections. To be called once, when the process is about to end.
  void stop();

  // Called with every report that a tab makes sound.
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

  // Asks every ready extension of that browser for its audible tabs. They answer through `onTab`.
  void askWhichTabIsAudible(Browser in);

  // Asks the browser to bring a tab forward. `completion` is called exactly once, perhaps before this returns.
  void focus(std::int64_t tabId, Browser in, std::function<void(FocusResult)> completion);

  // Sends the current settings to every ready extension.
  void broadcastSettings();

  // Asks Safari whether the extension is turned on. `completion` may be empty.
  void refreshSafariState(std::function<void()> completion);
  void openSafariExtensionSettings();

 private:
  class SafariConnection;

  void accept(LocalStream stream);
  void hello(BrowserConnection& from, const Message& message);
  void focusAnswered(const Message& message);
  void giveUp(std::int64_t request);
  BrowserConnection* firstReady(Browser browser) const;
  Message settingsMessage() const;
  void changed() const {
    if (onChange) onChange();
  }

  MainQueue& queue_;
  SafariServices& safariServices_;
  const Paths& paths_;
  NativeHosts nativeHosts_;
  SafariInbox inbox_;
  BridgeListener listener_;
  std::unique_ptr<BrowserConnection> safari_;
  std::map<std::int64_t, std::function<void(FocusResult)>> pending_;  // the key is the number of the request
  std::int64_t nextRequest_ = 1;
  Liveness alive_;
};

}  // namespace tollvane
