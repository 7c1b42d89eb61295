#include "app/history.h"

namespace tollvane {
namespace {

constexpr std::string_view fullFormat = "yyyy-MM-dd HH:mm:ss";

constexpr int mostSetAside = 1000;  // more of them mean that setting aside does not help

}  // namespace

void History::append(const SoundEvent& event) {
  std::string line = dates_.string(fullFormat, event.date);
  line += "\t" + event.app + "\t" + event.kind + "\t" + event.tabLabel().value_or("") + "\n";
  const auto file = paths_.history();
  if (files_.append(file, line) != Files::Append::notOpened) return;
  if (files_.exists(file) && !setAside(file)) return;
  // The folder may have been removed, or there was no room for it before.
  files_.createDirectories(file.parent_path());
  files_.writeAtomically(file, line);
}

bool History::setAside(const std::filesystem::path& file) {
  const std::string base = (file.parent_path() / file.stem()).string() + "-";
  for (int i = 1; i <= mostSetAside; ++i) {
    const std::filesystem::path other = base + std::to_string(i) + file.extension().string();
    if (!files_.exists(other)) return files_.rename(file, other);
  }
  return false;
}

}  // namespace tollvane
