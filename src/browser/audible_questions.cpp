#include "browser/audible_questions.h"

#include <algorithm>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

// More tabs than anyone has. It only matters whether it is one.
constexpr std::int64_t mostTabs = 1000;

auto place(const AudibleQuestions::Extensions& extensions, const BrowserConnection& connection) {
  return std::find_if(extensions.begin(), extensions.end(),
                      [&](const auto& each) { return each.get() == &connection; });
}

// How many tabs the message counts; absent if it answers no question.
std::optional<std::int64_t> tabsIn(const Message& message) {
  const auto type = json::text(message, "type");
  if (type == "audible" && json::isTrue(message, "asked")) return 1;
  if (type != "audibleCount") return std::nullopt;
  return std::clamp<std::int64_t>(json::wholeNumber(message, "count").value_or(mostTabs), 0, mostTabs);
}

}  // namespace

void AudibleQuestions::ask(const Extensions& extensions, Completion completion) {
  if (extensions.empty()) return;
  const auto question = std::make_shared<Question>(Question{extensions, {}, std::move(completion)});
  open_.push_back(question);
  queue_.after(patience, alive_.guard([this, old = std::weak_ptr(question)] { std::erase(open_, old.lock()); }));
  for (const auto& extension : extensions) extension->send({{"type", "whichAudible"}});
}

bool AudibleQuestions::answered(const BrowserConnection& from, const Message& message) {
  const auto count = tabsIn(message);
  if (!count) return false;
  // An extension answers its questions in their order.
  const auto found = std::find_if(open_.begin(), open_.end(), [&](const auto& each) {
    return place(each->unanswered, from) != each->unanswered.end();
  });
  if (found == open_.end()) return true;
  const std::shared_ptr<Question> question = *found;
  question->unanswered.erase(place(question->unanswered, from));
  question->tabs.count += static_cast<int>(*count);
  if (*count == 1) question->tabs.only = std::make_shared<const Message>(message);
  if (question->tabs.count != 1) question->tabs.only.reset();
  if (!question->unanswered.empty()) return true;
  open_.erase(found);
  if (question->completion) question->completion(question->tabs);
  return true;
}

void AudibleQuestions::closed(const BrowserConnection& connection) {
  std::erase_if(open_, [&](const auto& each) { return place(each->unanswered, connection) != each->unanswered.end(); });
}

}  // namespace tollvane
