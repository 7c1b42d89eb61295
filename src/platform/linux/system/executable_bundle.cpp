#include "platform/linux/system/executable_bundle.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "support/json.h"

namespace tollvane {

ExecutableBundle::ExecutableBundle(std::filesystem::path directory)
    : directory_(std::move(directory)), info_(std::make_unique<nlohmann::json>()) {
  std::ifstream stream(directory_ / "Info.json", std::ios::binary);
  *info_ = nlohmann::json::parse(stream, nullptr, /*allow_exceptions=*/false);
}

ExecutableBundle::~ExecutableBundle() = default;

std::optional<std::filesystem::path> ExecutableBundle::runningProgramsDirectory() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::nullopt : std::optional(program.parent_path());
}

std::optional<std::string> ExecutableBundle::infoString(std::string_view key) const { return json::text(*info_, key); }

}  // namespace tollvane
