// The bundle on Linux: the directory that contains the running program, Info.json (an object of texts and of lists of
// texts) and the other programs. The directory can be copied and run from anywhere.
#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>

#include "platform/bundle.h"

namespace tollvane {

class ExecutableBundle : public Bundle {
 public:
  explicit ExecutableBundle(std::filesystem::path directory);
  ~ExecutableBundle() override;

  // The directory of the running program; absent if the system does not tell it.
  static std::optional<std::filesystem::path> runningProgramsDirectory();

  const std::filesystem::path& directory() const { return directory_; }
  std::optional<std::string> infoString(std::string_view key) const override;
  std::vector<std::string> infoStrings(std::string_view key) const override;
  std::optional<std::filesystem::path> auxiliaryExecutable(std::string_view name) const override;
  std::optional<std::filesystem::path> resource(std::string_view name) const override;
  std::filesystem::path logTool() const override { return directory_ / "TollvaneLog"; }

 private:
  std::filesystem::path directory_;
  std::unique_ptr<nlohmann::json> info_;
};

}  // namespace tollvane
