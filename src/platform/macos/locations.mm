#include "catalogue/browsers.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class FoundationLocations : public Locations {
 public:
  std::optional<std::filesystem::path> home() const override {
    const std::string home = utf8(NSHomeDirectory());
    return home.empty() ? std::nullopt : std::optional<std::filesystem::path>(home);
  }

  std::optional<std::filesystem::path> applicationSupport() const override {
    NSArray<NSURL*>* urls = [NSFileManager.defaultManager URLsForDirectory:NSApplicationSupportDirectory
                                                                 inDomains:NSUserDomainMask];
    return pathOf(urls.firstObject);
  }

  std::optional<std::filesystem::path> runtimeFolder() const override { return std::nullopt; }

  std::vector<std::filesystem::path> nativeHostDirectories(std::string_view bundleID) const override {
    const BrowserEdition* edition = editionOfBundle(bundleID);
    const auto support = applicationSupport();
    if (edition == nullptr || edition->macManifests.empty() || !support) return {};
    return {*support / edition->macManifests};
  }

  std::vector<std::filesystem::path> applicationFolders() const override {
    std::vector<std::filesystem::path> folders = {"/Applications", "/System/Applications",
                                                  "/System/Applications/Utilities"};
    if (const auto own = home()) folders.push_back(*own / "Applications");
    return folders;
  }
};

}  // namespace

std::unique_ptr<Locations> makeLocations() { return std::make_unique<FoundationLocations>(); }

}  // namespace tollvane
