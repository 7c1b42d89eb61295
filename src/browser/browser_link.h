// Tollvane's end of the conversation with its browser extensions: who is connected, and what is asked of them.
//
// One for the life of the process; its owner sets the callbacks once. Messages come from the bridges that the
// browsers start, over a socket, and from Safari through its inbox; both kinds end in handle(). Nothing fails: what
// cannot be understood is ignored. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "browser/bridge_socket.h"
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

// How it went with bringing a tab forward.
enum class FocusResult {
  focused,
  tabClosed,    // the browser has no such tab any more
  unreachable,  // no extension that could be asked, or no answer
};

class BrowserLink {
 public:
  static constexpr std::string_view safariExtensionID = "com.quarnel.tollvane.safari";
  static constexpr std::string_view safariMessageName = "tollvane";
  static constexpr std::chrono::milliseconds focusPatience{2500};

  // All outlive the link.
  BrowserLink(MainQueue& queue, SafariServices& safari, Files& files, const Locations& locations, const Bundle& bundle,
              const Workspace& workspace, const Paths& paths);
  ~BrowserLink();

  // Lets the browsers know of the bridge, and listens to them.
  void start();

  // Closes everything. Once, when the process is about to end.
  void stop();

  // Called with every report that a tab makes sound.
  std::function<void(BrowserConnection& from, const Message& report)> onTab;

  // Called when the connections, or what is known of them, changed.
  std::function<void()> onChange;

  // Supplies the settings that every extension is sent; at first none.
  std::function<Message()> settings;

  // In the order in which they came. Safari is not among them.
  std::vector<std::shared_ptr<BrowserConnection>> connections;

  // How long a bridge may take to make room for one message before it is given up.
  std::chrono::milliseconds writePatience{1000};

  // Whether Safari's extension can be sent to.
  bool safariEnabled = false;
  BrowserConnection& safariConnection() { return *safari_; }

  // One message of an extension, or of its bridge.
  void handle(BrowserConnection& from, const Message& message);

  // Whether an extension of that browser is there and has introduced itself.
  bool isConnected(Browser browser) const;

  // Asks every ready extension of that browser for its audible tabs. They answer through onTab.
  void askWhichTabIsAudible(Browser in);

  // Asks for a tab to be brought forward. `completion` is called exactly once, perhaps before this returns.
  void focus(std::int64_t tabId, Browser in, std::function<void(FocusResult)> completion);

  // Sends the settings, as they are now, to every ready extension.
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
  std::map<std::int64_t, std::function<void(FocusResult)>> pending_;  // by the number of the request
  std::int64_t nextRequest_ = 1;
  Liveness alive_;
};

}  // namespace tollvane
