#include "model/paths.h"

#include "support/fatal.h"

namespace tollvane {
namespace {

// The top-level domain "invalid" is reserved for names that never exist (RFC 2606).
constexpr std::string_view nobody = "https://tollvane.invalid";

}  // namespace

const std::filesystem::path& Paths::supportDir() const {
  std::call_once(found_, [this] {
    const auto applicationSupport = locations_.applicationSupport();
    if (!applicationSupport) fatal("there is no directory for this user's application data.");
    supportDir_ = *applicationSupport / supportDirectoryName;
    files_.createDirectories(supportDir_);
  });
  return supportDir_;
}

std::string sitePage(const Bundle& bundle, std::string_view path) {
  std::string page = bundle.infoString("TollvaneSite").value_or(std::string(nobody));
  while (page.ends_with('/')) page.pop_back();
  return page += path;
}

bool hasSite(const Bundle& bundle) { return !sitePage(bundle, "").ends_with(".invalid"); }

}  // namespace tollvane
