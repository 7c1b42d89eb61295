#include "soundlog/makers/identity.h"

#include <utility>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"

namespace tollvane::soundlog {
namespace {

// A portal notifies on behalf of other applications, which it names by their desktop entry.
bool isPortal(std::string_view program) { return program.starts_with("xdg-desktop-portal"); }

std::string entryId(std::string_view entry) {
  entry.remove_prefix(entry.rfind('/') + 1);
  if (entry.ends_with(desktopFileEnding)) entry.remove_suffix(desktopFileEnding.size());
  return std::string(entry);
}

}  // namespace

std::string Identities::identify(const Notice& notice, std::optional<Pid> busSender) const {
  if (std::string id = entryId(notice.desktopEntry); !id.empty()) return id;
  // All facts about the senders are read first: a sender may end while entries are looked up.
  std::vector<Maker> senders;
  for (const auto& pid : {busSender, notice.declaredSender}) {
    if (!pid) continue;
    Maker sender = makers_.remember({.checkedPid = pid});
    if (sender.known() && !sender.name.empty()) senders.push_back(std::move(sender));
  }
  if (senders.empty() || isPortal(senders.front().name)) return notice.applicationName;
  for (const Maker& sender : senders) {
    if (auto id = applicationOf(sender)) return *id;
  }
  return notice.applicationName.empty() ? senders.front().name : notice.applicationName;
}

// The sender's own application, else the application of the nearest ancestor that the user would recognise.
std::optional<std::string> Identities::applicationOf(const Maker& sender) const {
  for (const ProcessKey& process : sender.chain) {
    const auto application = lookup_(process.pid);
    // If the number belongs to another process by now, it says nothing about the sender.
    if (!application || application->id.empty() || makers_.key(process.pid) != process) continue;
    if (application->regular || process == sender.process()) return application->id;
  }
  return std::nullopt;
}

}  // namespace tollvane::soundlog
