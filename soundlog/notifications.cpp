#include "soundlog/notifications.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace tollvane::soundlog {
namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* notifications = "org.freedesktop.Notifications";
constexpr const char* notifyRule = "type='method_call',interface='org.freedesktop.Notifications',member='Notify'";
constexpr const char* ownerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'";

// The most names whose processes are being asked for at the same time.
constexpr std::size_t mostQuestions = 64;

// A service that passes notifications on does so at once, but may have to be started first.
constexpr Duration longestPassage = std::chrono::seconds(5);
constexpr std::size_t mostDeliveries = 64;

template <typename Value>
std::optional<Value> basic(sd_bus_message* message, char type) {
  Value value{};
  if (sd_bus_message_read_basic(message, type, &value) <= 0) return std::nullopt;
  return value;
}

// Programs send this number in any integer type that suits their language.
std::optional<Pid> processNumber(sd_bus_message* message, std::string_view signature) {
  std::optional<std::int64_t> number;
  if (signature == "x") number = basic<std::int64_t>(message, 'x');
  if (signature == "i") number = basic<std::int32_t>(message, 'i');
  if (signature == "u") number = basic<std::uint32_t>(message, 'u');
  if (signature == "t") number = static_cast<std::int64_t>(basic<std::uint64_t>(message, 't').value_or(0));
  if (!number || *number < 2 || *number > INT32_MAX) return std::nullopt;
  return static_cast<Pid>(*number);
}

void readValue(sd_bus_message* message, std::string_view hint, std::string_view signature, Notice& notice) {
  if (hint == "desktop-entry" && signature == "s") {
    notice.desktopEntry = basic<const char*>(message, 's').value_or("");
  } else if (hint == "sender-pid") {
    notice.declaredSender = processNumber(message, signature);
  }
}

bool readHint(sd_bus_message* message, Notice& notice) {
  const char* name = nullptr;
  const char* signature = nullptr;
  char type = 0;
  if (sd_bus_message_read_basic(message, 's', &name) <= 0) return false;
  if (sd_bus_message_peek_type(message, &type, &signature) <= 0 || type != 'v') return false;
  static constexpr std::string_view known[] = {"desktop-entry", "sender-pid"};
  for (const std::string_view wanted : known) {
    if (wanted != name || std::strlen(signature) != 1) continue;
    if (sd_bus_message_enter_container(message, 'v', signature) <= 0) return false;
    readValue(message, wanted, signature, notice);
    // A value of an unexpected type has not been read yet.
    if (!sd_bus_message_at_end(message, 0)) sd_bus_message_skip(message, nullptr);
    return sd_bus_message_exit_container(message) >= 0;
  }
  return sd_bus_message_skip(message, "v") >= 0;
}

std::optional<Pid> processReply(sd_bus_message* reply) {
  std::uint32_t pid = 0;
  if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_read(reply, "u", &pid) <= 0) return std::nullopt;
  if (pid == 0 || pid > INT32_MAX) return std::nullopt;
  return static_cast<Pid>(pid);
}

}  // namespace

std::optional<Notice> readNotice(sd_bus_message* call) {
  if (!sd_bus_message_has_signature(call, "susssasa{sv}i")) return std::nullopt;
  Notice notice;
  const char* name = nullptr;
  if (sd_bus_message_read_basic(call, 's', &name) <= 0 || sd_bus_message_skip(call, "usssas") < 0) return std::nullopt;
  notice.applicationName = name;
  if (sd_bus_message_enter_container(call, 'a', "{sv}") < 0) return std::nullopt;
  while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
    if (!readHint(call, notice) || sd_bus_message_exit_container(call) < 0) return std::nullopt;
  }
  return notice;
}

// Asks for the process number behind a name on the bus.
struct NotificationSource::Question {
  NotificationSource* source;
  std::function<void(std::optional<Pid>)> then;
  BusSlot slot;

  static int answered(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto* const question = static_cast<Question*>(data);
    const auto then = std::move(question->then);
    question->source->questions_.remove_if([question](const Question& each) { return &each == question; });
    then(processReply(reply));
    return 0;
  }
};

NotificationSource::NotificationSource(std::string address, Events events)
    : address_(std::move(address)), events_(std::move(events)) {}

NotificationSource::~NotificationSource() { disconnect(); }

bool NotificationSource::connect() {
  if (monitor_) return true;
  const auto onClosed = [this] { closed(); };
  queries_ = BusConnection::open(address_, BusConnection::Role::ordinary, nullptr, onClosed);
  monitor_ = BusConnection::open(
      address_, BusConnection::Role::monitor, [this](sd_bus_message* message) { called(message); }, onClosed);
  if (queries_ && monitor_ && followService() && becomeMonitor()) return true;
  disconnect();
  return false;
}

void NotificationSource::disconnect() {
  questions_.clear();
  for (BusSlot* slot : {&monitoring_, &ownerChanges_, &ownerName_, &ownerPid_}) slot->reset();
  monitor_.reset();
  queries_.reset();
  served_ = false;
  owner_.clear();
  deliveries_.clear();
}

bool NotificationSource::becomeMonitor() {
  sd_bus_slot* slot = nullptr;
  const auto done = [](sd_bus_message* reply, void* data, sd_bus_error*) {
    auto* const self = static_cast<NotificationSource*>(data);
    if (sd_bus_message_is_method_error(reply, nullptr)) {
      std::fputs("TollvaneLog: The session bus does not let notifications be seen.\n", stderr);
      return 0;
    }
    self->served_ = true;
    self->events_.served();
    return 0;
  };
  const int result =
      sd_bus_call_method_async(monitor_->get(), &slot, busName, busPath, "org.freedesktop.DBus.Monitoring",
                               "BecomeMonitor", done, this, "asu", 2, notifyRule, ownerRule, 0);
  monitoring_.reset(slot);
  return result >= 0;
}

bool NotificationSource::followService() {
  const auto changed = [](sd_bus_message* signal, void* data, sd_bus_error*) {
    const char* owner = nullptr;
    if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) > 0) {
      static_cast<NotificationSource*>(data)->serviceOwner(owner);
    }
    return 0;
  };
  const auto named = [](sd_bus_message* reply, void* data, sd_bus_error*) {
    const char* owner = nullptr;
    const bool known = !sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "s", &owner) > 0;
    static_cast<NotificationSource*>(data)->serviceOwner(known ? owner : "");
    return 0;
  };
  // Without a handler for the reply, sd-bus would close the connection if the match is refused.
  const auto added = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_match_async(queries_->get(), &slot, ownerRule, changed, added, this) < 0) return false;
  ownerChanges_.reset(std::exchange(slot, nullptr));
  if (sd_bus_call_method_async(queries_->get(), &slot, busName, busPath, busName, "GetNameOwner", named, this, "s",
                               notifications) < 0) {
    return false;
  }
  ownerName_.reset(slot);
  return true;
}

void NotificationSource::called(sd_bus_message* message) {
  if (!served_) return;
  if (sd_bus_message_is_signal(message, busName, "NameOwnerChanged")) {
    const char* owner = nullptr;
    if (sd_bus_message_read(message, "sss", nullptr, nullptr, &owner) > 0) owner_ = owner;
    return;
  }
  if (!sd_bus_message_is_method_call(message, notifications, "Notify")) return;
  const auto notice = readNotice(message);
  if (!notice) return;
  const auto text = [](const char* name) { return std::string(name ? name : ""); };
  const std::string sender = text(sd_bus_message_get_sender(message));
  const std::string receiver = text(sd_bus_message_get_destination(message));
  const bool passedOn = isPassedOn(*notice, sender);
  remember(*notice, receiver);
  if (!receiver.empty() && receiver != notifications && receiver != owner_) {
    ask(receiver, [this](std::optional<Pid> pid) {
      if (pid) events_.received(*pid);
    });
  }
  if (passedOn) return;
  if (sender.empty() || !notice->desktopEntry.empty()) return events_.presented(*notice, std::nullopt);
  ask(sender, [this, notice = *notice](std::optional<Pid> pid) { events_.presented(notice, pid); });
}

// A service may change hints on the way, but not whose notification it is.
bool NotificationSource::isPassedOn(const Notice& notice, std::string_view sender) const {
  const Instant now = std::chrono::steady_clock::now();
  return std::any_of(deliveries_.begin(), deliveries_.end(), [&](const Delivery& each) {
    // Perhaps the service was started by this very notification, and had no unique name yet.
    const std::string& receiver = each.receiver == notifications ? owner_ : each.receiver;
    return receiver == sender && each.applicationName == notice.applicationName &&
           each.desktopEntry == notice.desktopEntry && now - each.at < longestPassage;
  });
}

void NotificationSource::remember(const Notice& notice, std::string receiver) {
  deliveries_.push_back(
      {notice.applicationName, notice.desktopEntry, std::move(receiver), std::chrono::steady_clock::now()});
  if (deliveries_.size() > mostDeliveries) deliveries_.pop_front();
}

// Answers at once that the process is unknown if too many questions are open.
void NotificationSource::ask(const std::string& name, std::function<void(std::optional<Pid>)> answered) {
  if (questions_.size() >= mostQuestions) return answered(std::nullopt);
  Question& question = questions_.emplace_back(Question{this, std::move(answered), nullptr});
  sd_bus_slot* slot = nullptr;
  const int result =
      sd_bus_call_method_async(queries_->get(), &slot, busName, busPath, busName, "GetConnectionUnixProcessID",
                               Question::answered, &question, "s", name.c_str());
  question.slot.reset(slot);
  if (result >= 0) return;
  const auto then = std::move(question.then);
  questions_.pop_back();
  then(std::nullopt);
}

void NotificationSource::serviceOwner(const char* owner) {
  ownerPid_.reset();
  owner_ = owner;
  events_.serviceChanged(std::nullopt);
  if (!*owner) return;
  const auto answered = [](sd_bus_message* reply, void* data, sd_bus_error*) {
    static_cast<NotificationSource*>(data)->events_.serviceChanged(processReply(reply));
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  sd_bus_call_method_async(queries_->get(), &slot, busName, busPath, busName, "GetConnectionUnixProcessID", answered,
                           this, "s", owner);
  ownerPid_.reset(slot);
}

// To be called when either connection closes: the other one is useless alone.
void NotificationSource::closed() {
  const bool served = served_;
  disconnect();
  events_.serviceChanged(std::nullopt);
  events_.ended(served);
}

}  // namespace tollvane::soundlog
