#include "settings/login_item.h"

namespace tollvane {

std::optional<std::filesystem::path> LoginItem::legacyAgent() const {
  const auto home = locations_.home();
  return home ? std::optional(*home / "Library/LaunchAgents/com.vostrel.tollvane.plist") : std::nullopt;
}

void LoginItem::migrateFromLegacyAgent() {
  const auto agent = legacyAgent();
  if (!agent || !files_.exists(*agent)) return;
  if (service_.registerApplication(AskedBy::program) && !isEnabled()) return;
  files_.remove(*agent);
}

}  // namespace tollvane
