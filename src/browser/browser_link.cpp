#include "browser/browser_link.h"

#include <algorithm>
#include <utility>

#include "browser/bridge_connection.h"
#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

// Safari as a connection like the others. Messages are sent to it only while `safariEnabled` is true.
class BrowserLink::SafariConnection : public BrowserConnection {
 public:
  explicit SafariConnection(SafariServices& services) : services_(services) {
    bundleID = Browser(Browser::safari).bundleID();
  }

  void send(const Message& message) override {
    services_.dispatchMessage(safariMessageName, safariExtensionID, json::compact(message));
  }

 private:
  SafariServices& services_;
};

BrowserLink::BrowserLink(MainQueue& queue, SafariServices& safari, Files& files, const Locations& locations,
                         const Bundle& bundle, const Workspace& workspace, const Paths& paths)
    : settings([] { return Message::object(); }),
      queue_(queue),
      safariServices_(safari),
      locations_(locations),
      paths_(paths),
      nativeHosts_(files, locations, bundle, workspace, paths),
      inbox_(queue, files),
      listener_(queue, files),
      localListener_(queue, files),
      safari_(std::make_shared<SafariConnection>(safari)),
      focusRequests_(queue),
      audibleQuestions_(queue) {
  inbox_.onMessage = [this](const Message& message) { handle(*safari_, message); };
  listener_.onConnection = [this](LocalStream stream) { accept(std::move(stream)); };
  localListener_.onConnection = listener_.onConnection;
}

BrowserLink::~BrowserLink() = default;

void BrowserLink::start() {
  nativeHosts_.installManifests();
  inbox_.start(paths_.supportDir() / "safari-inbox");
  listener_.open(paths_.bridgeSocket());
  if (const auto folder = locations_.runtimeFolder())
    localListener_.open(*folder / supportDirectoryName / bridgeSocketName);
}

void BrowserLink::stop() {
  connections.clear();
  listener_.close();
  localListener_.close();
}

void BrowserLink::accept(LocalStream stream) {
  const auto connection = std::make_shared<BridgeConnection>(std::move(stream), queue_);
  BridgeConnection* from = connection.get();
  connection->onMessage = alive_.guard([this, from](const Message& message) { handle(*from, message); });
  connection->onClosed = alive_.guard([this, from] {
    std::erase_if(connections, [from](const auto& each) { return each.get() == from; });
    focusRequests_.closed(*from);
    audibleQuestions_.closed(*from);
    changed();
  });
  connections.push_back(connection);
  connection->startReading();
}

void BrowserLink::handle(BrowserConnection& from, const Message& message) {
  const auto type = json::text(message, "type");
  if (type == "bridge") {
    from.bundleID = json::text(message, "bundleID");
    changed();
  } else if (type == "hello") {
    hello(from, message);
  } else if (type == "audible") {
    audible(from, message);
  } else if (type == "audibleCount") {
    audibleQuestions_.answered(from, message);
  } else if (type == "focusResult") {
    focusRequests_.answered(from, message);
  }
}

void BrowserLink::hello(BrowserConnection& from, const Message& message) {
  from.extensionVersion = json::text(message, "version").value_or("?");
  const bool safari = from.browser() == Browser::safari;
  if (safari) safariEnabled = true;
  (safari ? *safari_ : from).send(settingsMessage());
  changed();
}

void BrowserLink::audible(BrowserConnection& from, const Message& message) {
  if (const auto tabId = json::wholeNumber(message, "tabId")) from.remember(*tabId);
  if (audibleQuestions_.answered(from, message)) return;
  if (onTab) onTab(from, message);
}

bool BrowserLink::isConnected(Browser browser) const { return !ready(browser).empty(); }

void BrowserLink::askWhichTabIsAudible(Browser in, AudibleQuestions::Completion completion) {
  if (in != Browser::safari) return audibleQuestions_.ask(ready(in), std::move(completion));
  if (safariEnabled) safari_->send({{"type", "whichAudible"}});
}

void BrowserLink::focus(std::int64_t tabId, Browser in, FocusRequests::Completion completion) {
  auto extensions = ready(in);
  std::stable_partition(extensions.begin(), extensions.end(),
                        [&](const auto& each) { return each->hasReported(tabId); });
  focusRequests_.ask(tabId, std::move(extensions), std::move(completion));
}

void BrowserLink::broadcastSettings() {
  const Message message = settingsMessage();
  for (const auto& connection : std::vector(connections))
    if (connection->isReady() && connection->browser() != Browser::safari) connection->send(message);
  if (safariEnabled) safari_->send(message);
}

void BrowserLink::refreshSafariState(std::function<void()> completion) {
  const auto learnt = alive_.guard([this, completion = std::move(completion)](std::optional<bool> isEnabled) {
    safariEnabled = isEnabled.value_or(false);
    if (completion) completion();
  });
  safariServices_.getState(safariExtensionID, [queue = &queue_, learnt](std::optional<bool> isEnabled) {
    queue->post([learnt = learnt, isEnabled]() mutable { learnt(isEnabled); });
  });
}

void BrowserLink::openSafariExtensionSettings() { safariServices_.showPreferences(safariExtensionID); }

// The extensions that have introduced themselves, one for each profile of the browser.
std::vector<std::shared_ptr<BrowserConnection>> BrowserLink::ready(Browser browser) const {
  std::vector<std::shared_ptr<BrowserConnection>> found;
  if (browser == Browser::safari) {
    if (safariEnabled) found.push_back(safari_);
    return found;
  }
  for (const auto& connection : connections)
    if (connection->isReady() && connection->browser() == browser) found.push_back(connection);
  return found;
}

Message BrowserLink::settingsMessage() const {
  Message message = settings();
  message["type"] = "settings";
  return message;
}

}  // namespace tollvane
