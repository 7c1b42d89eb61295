#include "model/sound_event.h"

#include "support/text.h"

namespace tollvane {
namespace {

constexpr std::size_t longestTitle = 48;

std::string shortTitle(std::string_view title) {
  title = text::trimmed(title);
  std::string_view whole = text::prefix(title, longestTitle);
  if (whole.size() == title.size()) return std::string(title);
  return std::string(text::prefix(title, longestTitle - 1)) + "…";
}

std::string_view withoutWww(std::string_view host) {
  constexpr std::string_view www = "www.";
  return host.starts_with(www) ? host.substr(www.size()) : host;
}

}  // namespace

std::optional<std::string> SoundEvent::tabLabel() const {
  if (!hasTab()) return std::nullopt;
  std::string title = shortTitle(tabTitle.value_or(""));
  std::string host(withoutWww(tabHost ? std::string_view(*tabHost) : std::string_view()));
  if (title.empty() && host.empty()) return "a browser tab";
  if (host.empty()) return title;
  if (title.empty()) return host;
  return title + "  (" + host + ")";  // two blanks, because one is too narrow in proportional type
}

}  // namespace tollvane
