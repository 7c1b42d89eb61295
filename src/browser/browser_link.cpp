#include "browser/browser_link.h"

namespace tollvane {

void BrowserLink::askWhichTabIsAudible(Browser in) {
  for (const auto& connection : connections)
    if (connection->isReady() && connection->browser() == in) connection->send({{"type", "whichAudible"}});
}

}  // namespace tollvane
