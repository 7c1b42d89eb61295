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
      paths_(paths),
      nativeHosts_(files, locations, bundle, workspace, paths),
      inbox_(queue, files),
      listener_(queue, files),
      safari_(std::make_unique<SafariConnection>(safari)) {
  inbox_.onMessage = [this](const Message& message) { handle(*safari_, message); };
  listener_.onConnection = [this](LocalStream stream) { accept(std::move(stream)); };
}

BrowserLink::~BrowserLink() = default;

void BrowserLink::start() {
  nativeHosts_.installManifests();
  inbox_.start(paths_.supportDir() / "safari-inbox");
  listener_.open(paths_.bridgeSocket());
}

void BrowserLink::stop() {
  connections.clear();
  listener_.close();
}

void BrowserLink::accept(LocalStream stream) {
  const auto connection = std::make_shared<BridgeConnection>(std::move(stream), queue_);
  BridgeConnection* from = connection.get();
  connection->onMessage = alive_.guard([this, from](const Message& message) { handle(*from, message); });
  connection->onClosed = alive_.guard([this, from] {
    std::erase_if(connections, [from](const auto& each) { return each.get() == from; });
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
    if (onTab) onTab(from, message);
  } else if (type == "focusResult") {
    focusAnswered(message);
  }
}

void BrowserLink::hello(BrowserConnection& from, const Message& message) {
  from.extensionVersion = json::text(message, "version").value_or("?");
  const bool safari = from.browser() == Browser::safari;
  if (safari) safariEnabled = true;
  (safari ? *safari_ : from).send(settingsMessage());
  changed();
}

bool BrowserLink::isConnected(Browser browser) const { return firstReady(browser) != nullptr; }

void BrowserLink::askWhichTabIsAudible(Browser in) {
  const Message question = {{"type", "whichAudible"}};
  if (in == Browser::safari) {
    if (safariEnabled) safari_->send(question);
    return;
  }
  // A copy, because a connection to which sending fails may leave the list.
  for (const auto& connection : std::vector(connections))
    if (connection->isReady() && connection->browser() == in) connection->send(question);
}

void BrowserLink::focus(std::int64_t tabId, Browser in, std::function<void(FocusResult)> completion) {
  const std::int64_t request = nextRequest_++;
  BrowserConnection* connection = firstReady(in);
  if (connection == nullptr) return completion(FocusResult::unreachable);
  pending_.emplace(request, std::move(completion));
  queue_.after(focusPatience, alive_.guard([this, request] { giveUp(request); }));
  connection->send({{"type", "focus"}, {"req", request}, {"tabId", tabId}});
}

void BrowserLink::focusAnswered(const Message& message) {
  const auto request = json::wholeNumber(message, "req");
  if (!request) return;
  auto answered = pending_.extract(*request);
  if (!answered) return;
  const auto ok = message.find("ok");
  const bool focused = ok != message.end() && ok->is_boolean() && ok->get<bool>();
  answered.mapped()(focused ? FocusResult::focused : FocusResult::tabClosed);
}

void BrowserLink::giveUp(std::int64_t request) {
  if (auto unanswered = pending_.extract(request)) unanswered.mapped()(FocusResult::unreachable);
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

BrowserConnection* BrowserLink::firstReady(Browser browser) const {
  if (browser == Browser::safari) return safariEnabled ? safari_.get() : nullptr;
  const auto found = std::find_if(connections.begin(), connections.end(), [&](const auto& connection) {
    return connection->isReady() && connection->browser() == browser;
  });
  return found == connections.end() ? nullptr : found->get();
}

Message BrowserLink::settingsMessage() const {
  Message message = settings();
  message["type"] = "settings";
  return message;
}

}  // namespace tollvane
