#include "model/paths.h"

#include "support/fatal.h"

namespace tollvane {

const std::filesystem::path& Paths::supportDir() const {
  std::call_once(found_, [this] {
    const auto applicationSupport = locations_.applicationSupport();
    if (!applicationSupport) fatal("there is no directory for this user's application data.");
    supportDir_ = *applicationSupport / supportDirectoryName;
    files_.createDirectories(supportDir_);
  });
  return supportDir_;
}

}  // namespace tollvane
