#include "soundlog/notifications.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace tollvane::soundlog {
namespace {

constexpr const char* bus = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* notifications = "org.freedesktop.Notifications";
constexpr const char* notifyRule = "type='method_call',interface='org.freedesktop.Notifications',member='Notify'";
constexpr const char* ownerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'";

// The most notifications whose senders are being asked for at the same time.
constexpr std::size_t mostQuestions = 64;

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
  } else if (hint == "suppress-sound" && signature == "b") {
    notice.playsItself = basic<int>(message, 'b').value_or(0) != 0;
  }
}

bool readHint(sd_bus_message* message, Notice& notice) {
  const char* name = nullptr;
  const char* signature = nullptr;
  char type = 0;
  if (sd_bus_message_read_basic(message, 's', &name) <= 0) return false;
  if (sd_bus_message_peek_type(message, &type, &signature) <= 0 || type != 'v') return false;
  static constexpr std::string_view known[] = {"desktop-entry", "sender-pid", "suppress-sound"};
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

// The control group of the service unit in which `pid` is the main process; empty if there is none. If the parent is in
// the same group, the group belongs to a whole session, or to the bus that started this process and many others.
std::string ownUnit(const ProcFs& processes, Pid pid) {
  const std::string group = processes.cgroup(pid);
  const auto status = processes.status(pid);
  if (!group.ends_with(".service") || !status) return {};
  return processes.cgroup(status->parent) == group ? std::string() : group;
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

// A notification that waits for its sender's process number.
struct NotificationSource::Question {
  NotificationSource* source;
  Notice notice;
  BusSlot slot;

  static int answered(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto* const question = static_cast<Question*>(data);
    NotificationSource& source = *question->source;
    const Notice notice = std::move(question->notice);
    source.questions_.remove_if([question](const Question& each) { return &each == question; });
    source.events_.presented(notice, processReply(reply));
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
  const int result = sd_bus_call_method_async(monitor_->get(), &slot, bus, busPath, "org.freedesktop.DBus.Monitoring",
                                              "BecomeMonitor", done, this, "asu", 1, notifyRule, 0);
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
  if (sd_bus_call_method_async(queries_->get(), &slot, bus, busPath, bus, "GetNameOwner", named, this, "s",
                               notifications) < 0) {
    return false;
  }
  ownerName_.reset(slot);
  return true;
}

void NotificationSource::called(sd_bus_message* call) {
  if (!served_ || !sd_bus_message_is_method_call(call, notifications, "Notify")) return;
  auto notice = readNotice(call);
  if (!notice) return;
  const char* const sender = sd_bus_message_get_sender(call);
  if (!sender || !notice->desktopEntry.empty() || questions_.size() >= mostQuestions) {
    events_.presented(*notice, std::nullopt);
  } else {
    askSender(sender, std::move(*notice));
  }
}

void NotificationSource::askSender(const char* sender, Notice notice) {
  Question& question = questions_.emplace_back(Question{this, std::move(notice), nullptr});
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_call_method_async(queries_->get(), &slot, bus, busPath, bus, "GetConnectionUnixProcessID",
                                              Question::answered, &question, "s", sender);
  question.slot.reset(slot);
  if (result >= 0) return;
  const Notice unanswered = std::move(question.notice);
  questions_.pop_back();
  events_.presented(unanswered, std::nullopt);
}

void NotificationSource::serviceOwner(const char* owner) {
  ownerPid_.reset();
  events_.serviceChanged(std::nullopt);
  if (!*owner) return;
  const auto answered = [](sd_bus_message* reply, void* data, sd_bus_error*) {
    static_cast<NotificationSource*>(data)->events_.serviceChanged(processReply(reply));
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  sd_bus_call_method_async(queries_->get(), &slot, bus, busPath, bus, "GetConnectionUnixProcessID", answered, this, "s",
                           owner);
  ownerPid_.reset(slot);
}

// To be called when either connection closes: the other one is useless alone.
void NotificationSource::closed() {
  const bool served = served_;
  disconnect();
  events_.serviceChanged(std::nullopt);
  events_.ended(served);
}

void NotificationService::setOwner(std::optional<Pid> pid) {
  owner_ = pid ? makers_.key(*pid) : std::nullopt;
  unit_ = owner_ ? ownUnit(processes_, owner_->pid) : std::string();
}

bool NotificationService::plays(const Maker& maker) const {
  if (maker.runByDunst) return true;
  if (!owner_ || !maker.known()) return false;
  return maker.process() == *owner_ || (!unit_.empty() && maker.cgroup == unit_);
}

}  // namespace tollvane::soundlog
