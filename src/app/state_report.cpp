#include "app/state_report.h"

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

std::string stateReport(std::string_view version, Hearing hearing, const BrowserLink& link,
                        const DateFormatter& dates) {
  nlohmann::json extensions = nlohmann::json::array();
  for (const auto& connection : link.connections) {
    if (!connection->isReady()) continue;
    nlohmann::json extension = {{"browser", connection->bundleID.value_or("")},
                                {"version", *connection->extensionVersion}};
    if (connection->lastReport) extension["lastReport"] = dates.string("yyyy-MM-dd HH:mm:ss", *connection->lastReport);
    extensions.push_back(std::move(extension));
  }
  return json::compact({{"version", version},
                        {"logTool", hearing != Hearing::noLogTool},
                        {"soundServer", hearing != Hearing::noSoundServer},
                        {"extensions", std::move(extensions)}});
}

}  // namespace tollvane
