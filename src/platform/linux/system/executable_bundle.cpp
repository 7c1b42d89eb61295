#include "platform/linux/system/executable_bundle.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

ExecutableBundle::ExecutableBundle(std::filesystem::path directory)
    : directory_(std::move(directory)), info_(std::make_unique<nlohmann::json>()) {
  std::ifstream stream(directory_ / "Info.json", std::ios::binary);
  if (auto info = json::object(std::string(std::istreambuf_iterator<char>(stream), {}))) *info_ = *std::move(info);
}

ExecutableBundle::~ExecutableBundle() = default;

std::optional<std::filesystem::path> ExecutableBundle::runningProgramsDirectory() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::nullopt : std::optional(program.parent_path());
}

std::optional<std::string> ExecutableBundle::infoString(std::string_view key) const { return json::text(*info_, key); }

}  // namespace tollvane
