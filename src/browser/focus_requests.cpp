#include "browser/focus_requests.h"

#include <algorithm>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

void FocusRequests::ask(std::int64_t tabId, Extensions extensions, Completion completion) {
  const std::int64_t number = nextNumber_++;
  if (extensions.empty()) return completion(FocusResult::unreachable, "");
  pending_.emplace(number, Request{tabId, std::move(extensions), false, std::move(completion)});
  queue_.after(patience, alive_.guard([this, number] { finish(number, FocusResult::unreachable); }));
  askFirst(number);
}

void FocusRequests::askFirst(std::int64_t number) {
  const Request& request = pending_.at(number);
  const auto extension = request.extensions.front();
  extension->send({{"type", "focus"}, {"req", number}, {"tabId", request.tabId}});
}

void FocusRequests::askNext(std::int64_t number) {
  Request& request = pending_.at(number);
  request.extensions.erase(request.extensions.begin());
  if (!request.extensions.empty()) return askFirst(number);
  finish(number, request.incomplete ? FocusResult::unreachable : FocusResult::tabClosed);
}

void FocusRequests::answered(const BrowserConnection& from, const Message& answer) {
  const auto number = json::wholeNumber(answer, "req");
  const auto request = number ? pending_.find(*number) : pending_.end();
  if (request == pending_.end() || request->second.extensions.front().get() != &from) return;
  json::isTrue(answer, "ok") ? finish(*number, FocusResult::focused, from.bundleID.value_or("")) : askNext(*number);
}

void FocusRequests::closed(const BrowserConnection& connection) {
  std::vector<std::int64_t> unanswered;
  for (auto& [number, request] : pending_) {
    auto& extensions = request.extensions;
    const auto gone =
        std::find_if(extensions.begin(), extensions.end(), [&](const auto& each) { return each.get() == &connection; });
    if (gone == extensions.end()) continue;
    request.incomplete = true;
    if (gone == extensions.begin()) {
      unanswered.push_back(number);
    } else {
      extensions.erase(gone);
    }
  }
  // A completion may make or end other requests.
  for (const std::int64_t number : unanswered)
    if (pending_.contains(number)) askNext(number);
}

void FocusRequests::finish(std::int64_t number, FocusResult result, std::string_view bundleID) {
  if (auto request = pending_.extract(number)) request.mapped().completion(result, bundleID);
}

}  // namespace tollvane
