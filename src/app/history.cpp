#include "app/history.h"

namespace tollvane {
namespace {

constexpr std::string_view fullFormat = "yyyy-MM-dd HH:mm:ss";

}  // namespace

void History::append(const SoundEvent& event) {
  std::string line = dates_.string(fullFormat, event.date);
  line += "\t" + event.app + "\t" + event.kind + "\t" + event.tabLabel().value_or("") + "\n";
  const auto file = paths_.history();
  if (files_.append(file, line) == Files::Append::notOpened) files_.writeAtomically(file, line);
}

}  // namespace tollvane
