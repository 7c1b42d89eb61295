#include "browser/safari_inbox.h"

#include <algorithm>
#include <string>
#include <vector>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

void SafariInbox::start(const std::filesystem::path& directory) {
  directory_ = directory;
  files_.createDirectories(directory_);
  watch_ = queue_.watchDirectory(directory_, [this] { drain(); });
  if (watch_) drain();
}

void SafariInbox::drain() {
  auto names = files_.list(directory_);
  if (!names) return;
  std::erase_if(*names, [](const std::string& name) { return !name.ends_with(".json"); });
  std::sort(names->begin(), names->end());
  for (const std::string& name : *names) {
    const auto content = files_.read(directory_ / name, largestMessage);
    files_.remove(directory_ / name);
    const auto message = content ? json::object(*content) : std::nullopt;
    if (message && onMessage) onMessage(*message);
  }
}

}  // namespace tollvane
