#include "platform/linux/desktop/activation_target.h"

#include <algorithm>

#include "platform/linux/apps/program_line.h"

namespace tollvane {
namespace {

enum Rank { ownProcess, otherProcess, sameName, host };

bool contains(const std::vector<Pid>& pids, Pid pid) { return std::find(pids.begin(), pids.end(), pid) != pids.end(); }

}  // namespace

std::optional<int> ActivationTarget::rankOfPid(Pid windowPid) const {
  if (windowPid <= 0) return std::nullopt;
  if (windowPid == pid) return ownProcess;
  if (contains(others, windowPid)) return otherProcess;
  if (contains(hosts, windowPid)) return host;
  return std::nullopt;
}

std::optional<int> ActivationTarget::rankOfName(std::string_view windowName) const {
  if (entry == nullptr || windowName.empty()) return std::nullopt;
  const std::string name = lowerCase(windowName);
  // What the entry promises, or its own name, or the program's, which is what toolkits say when nobody tells them.
  const bool same = name == lowerCase(entry->startupWmClass) || name == lowerCase(entry->id) ||
                    name == lowerCase(lastComponent(entry->program));
  return same ? std::optional<int>(sameName) : std::nullopt;
}

std::optional<int> ActivationTarget::rank(Pid windowPid, std::string_view name, std::string_view otherName) const {
  std::optional<int> best;
  for (const auto& rank : {rankOfPid(windowPid), rankOfName(name), rankOfName(otherName)}) {
    if (rank && (!best || *rank < *best)) best = rank;
  }
  return best;
}

}  // namespace tollvane
