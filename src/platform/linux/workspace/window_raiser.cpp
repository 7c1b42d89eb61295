#include "platform/linux/workspace/window_raiser.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/kernel/program_line.h"
#include "support/ascii.h"

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds betweenLooks{100};
constexpr int mostLooks = 10;

enum Rank { ownProcess, starter, otherProcess, sameName, host };

bool contains(const std::vector<Pid>& pids, Pid pid) { return std::find(pids.begin(), pids.end(), pid) != pids.end(); }

}  // namespace

std::optional<int> ActivationTarget::rankOfPid(Pid windowPid) const {
  if (windowPid <= 0) return std::nullopt;
  if (windowPid == pid) return ownProcess;
  if (contains(starters, windowPid)) return starter;
  if (contains(others, windowPid)) return otherProcess;
  if (contains(hosts, windowPid)) return host;
  return std::nullopt;
}

std::optional<int> ActivationTarget::rankOfName(std::string_view windowName) const {
  if (entry == nullptr || windowName.empty()) return std::nullopt;
  const std::string name = ascii::lowerCase(windowName);
  // What the entry promises, or its own name, or the program's, which is what toolkits say when nobody tells them.
  const bool same = name == ascii::lowerCase(entry->startupWmClass) || name == ascii::lowerCase(entry->id) ||
                    name == ascii::lowerCase(lastComponent(entry->program));
  return same ? std::optional<int>(sameName) : std::nullopt;
}

std::optional<int> ActivationTarget::rank(Pid windowPid, const std::vector<std::string>& windowNames) const {
  std::optional<int> best = rankOfPid(windowPid);
  for (const std::string& name : windowNames) {
    const auto byName = rankOfName(name);
    if (byName && (!best || *byName < *best)) best = byName;
  }
  return best;
}

std::optional<OpenWindow> bestWindowOf(const std::vector<OpenWindow>& windows, const ActivationTarget& target) {
  struct Order {
    ActivationTarget::Fit fit;
    bool isInactive;
    double depth;
    auto operator<=>(const Order&) const = default;
  };
  std::optional<Order> best;
  std::optional<OpenWindow> found;
  for (const OpenWindow& window : windows) {
    const auto rank = target.rank(window.pid, window.names);
    const auto fit = rank ? target.fit(*rank, window.title) : std::nullopt;
    if (!fit) continue;
    const Order order{*fit, !window.isActive, -window.height};
    if (best && !(order < *best)) continue;
    best = order;
    found = window;
  }
  return found;
}

void Activator::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  const int request = ++requests_;
  tryFrom(0, target, Raised::unknown, [this, target, request, done = std::move(done)](Raised raised) {
    if (raised == Raised::yes && !target.title.empty()) lookForTitle(target, request, mostLooks);
    done(raised);
  });
}

void Activator::lookForTitle(ActivationTarget target, int request, int times) {
  target.isTitleNeeded = true;
  queue_.after(betweenLooks, alive_.guard([this, target, request, times] {
    if (request != requests_) return;
    tryFrom(0, target, Raised::unknown, [this, target, request, times](Raised raised) {
      if (raised != Raised::yes && times > 1) lookForTitle(target, request, times - 1);
    });
  }));
}

void Activator::tryFrom(std::size_t index, const ActivationTarget& target, Raised soFar,
                        std::function<void(Raised)> done) {
  if (index >= raisers_.size()) return done(soFar);
  raisers_[index]->raise(target, alive_.guard([this, index, target, soFar, done](Raised raised) {
    if (raised == Raised::yes) return done(raised);
    tryFrom(index + 1, target, raised == Raised::noWindow ? raised : soFar, done);
  }));
}

}  // namespace tollvane
