#include "soundlog/notifications/notification_service.h"

namespace tollvane::soundlog {
namespace {

// The service's own control group: a service unit whose main process it is. Where its parent sits in the same group,
// the group is a whole session's, or that of the bus that started it along with many others.
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

bool NotificationService::plays(const Maker& maker) const {
  if (maker.runByDunst) return true;
  if (!owner_ || !maker.known()) return false;
  return maker.process() == *owner_ || (!unit_.empty() && maker.cgroup == unit_);
}

}  // namespace tollvane::soundlog
