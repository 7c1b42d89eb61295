#include "soundlog/notification_service.h"

#include <algorithm>

namespace tollvane::soundlog {
namespace {

// The control group of the service unit in which `pid` is the main process; empty if none exists. If the parent is in
// the same group, the group belongs to a whole session, or to the bus that started this process and many others.
std::string ownUnit(const ProcFs& processes, Pid pid) {
  const std::string group = processes.cgroup(pid);
  const auto status = processes.status(pid);
  if (!group.ends_with(".service") || !status) return {};
  return processes.cgroup(status->parent) == group ? std::string() : group;
}

}  // namespace

void NotificationService::setOwner(std::optional<Pid> pid) {
  owner_ = pid ? makers_.key(*pid) : std::nullopt;
  unit_ = owner_ ? ownUnit(processes_, owner_->pid) : std::string();
}

void NotificationService::received(Pid receiver, Instant now) {
  const auto key = makers_.key(receiver);
  std::erase_if(receivers_,
                [&](const auto& each) { return each.first == key || now - each.second >= notificationWindow; });
  if (key) receivers_.emplace_back(*key, now);
}

bool NotificationService::plays(const Maker& maker, Instant now) const {
  if (maker.playsFor) return true;
  if (!maker.known()) return false;
  if (owner_ && (maker.process() == *owner_ || (!unit_.empty() && maker.cgroup == unit_))) return true;
  return std::any_of(receivers_.begin(), receivers_.end(), [&](const auto& each) {
    return each.first == maker.process() && now - each.second < notificationWindow;
  });
}

void RecentNotices::presented(const Notice& notice, std::string identity, Instant now) {
  told_ = identity;
  notices_.push_back({notice.applicationName, notice.desktopEntry, std::move(identity), now});
  if (notices_.size() > most) notices_.pop_front();
}

std::optional<std::string> RecentNotices::presentAgainFor(const Maker& maker, Instant now) {
  auto identity = behind(maker, now);
  if (!identity || identity == told_) return std::nullopt;
  told_ = *identity;
  return identity;
}

// A script is told the notification's own words, and the newest notification with these words is meant. For everything
// else, it is the newest of all.
std::optional<std::string> RecentNotices::behind(const Maker& maker, Instant now) const {
  if (!maker.playsFor) {
    const bool any = !notices_.empty() && now - notices_.back().at < notificationWindow;
    return any ? std::optional(notices_.back().identity) : std::nullopt;
  }
  const NotificationWords& words = *maker.playsFor;
  const auto found = std::find_if(notices_.rbegin(), notices_.rend(), [&](const Recent& each) {
    return each.applicationName == words.applicationName && each.desktopEntry == words.desktopEntry;
  });
  if (found != notices_.rend()) return found->identity;
  const std::string& said = words.desktopEntry.empty() ? words.applicationName : words.desktopEntry;
  return said.empty() ? std::nullopt : std::optional(said);
}

}  // namespace tollvane::soundlog
