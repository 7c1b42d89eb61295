#include "settings/extension_pick.h"

#include "model/paths.h"

namespace tollvane {
namespace {

void openPage(const std::string& page, Browser in, Workspace& workspace) {
  std::optional<std::filesystem::path> application;
  for (const std::string_view edition : in.editions())
    if (!application) application = workspace.urlForApplication(edition);
  if (!application) return workspace.openURL(page);
  workspace.openURL(page, *application, [page, &workspace](bool opened) {
    if (!opened) workspace.openURL(page);
  });
}

}  // namespace

std::string ExtensionPick::storeLink(const Bundle& bundle) const {
  switch (browser) {
    case Browser::firefox:
      return sitePage(bundle, "/go/firefox");
    case Browser::edge:
      return sitePage(bundle, "/go/edge");
    default:
      return sitePage(bundle, "/go/chrome");
  }
}

void ExtensionPick::open(const std::vector<ExtensionPick>& picks, const Bundle& bundle, MainQueue& queue,
                         Workspace& workspace) {
  if (picks.empty()) return;
  if (!hasSite(bundle)) {
    if (const auto page = bundle.resource(guide)) workspace.open(*page, [](bool) {});
    return;
  }
  Duration delay{};
  for (const ExtensionPick& pick : picks) {
    queue.after(delay, [page = pick.storeLink(bundle), browser = pick.browser, &workspace] {
      openPage(page, browser, workspace);
    });
    delay += stagger;
  }
}

}  // namespace tollvane
