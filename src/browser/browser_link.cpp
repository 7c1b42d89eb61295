#include "browser/browser_link.h"

#include "support/json_value.h"

namespace tollvane {

BrowserLink::BrowserLink() : settings([] { return Message::object(); }) {}

void BrowserLink::askWhichTabIsAudible(Browser in) {
  for (const auto& connection : connections)
    if (connection->isReady() && connection->browser() == in) connection->send({{"type", "whichAudible"}});
}

}  // namespace tollvane
