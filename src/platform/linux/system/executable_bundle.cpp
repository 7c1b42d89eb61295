#include "platform/linux/system/executable_bundle.h"

#include <unistd.h>

#include <utility>

#include "platform/posix/posix_files.h"
#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

ExecutableBundle::ExecutableBundle(std::filesystem::path directory)
    : directory_(std::move(directory)), info_(std::make_unique<nlohmann::json>()) {
  constexpr std::size_t largestInfo = 1 << 20;
  const auto text = readPlainFile(directory_ / "Info.json", largestInfo);
  if (auto info = text ? json::object(*text) : std::nullopt) *info_ = *std::move(info);
}

ExecutableBundle::~ExecutableBundle() = default;

std::optional<std::filesystem::path> ExecutableBundle::runningProgramsDirectory() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::nullopt : std::optional(program.parent_path());
}

std::optional<std::string> ExecutableBundle::infoString(std::string_view key) const { return json::text(*info_, key); }

std::vector<std::string> ExecutableBundle::infoStrings(std::string_view key) const {
  std::vector<std::string> texts;
  const auto list = info_->find(key);
  if (list == info_->end() || !list->is_array()) return texts;
  for (const auto& element : *list)
    if (element.is_string()) texts.push_back(element.get<std::string>());
  return texts;
}

std::optional<std::filesystem::path> ExecutableBundle::auxiliaryExecutable(std::string_view name) const {
  const auto program = directory_ / name;
  std::error_code error;
  if (!std::filesystem::is_regular_file(program, error) || ::access(program.c_str(), X_OK) != 0) return std::nullopt;
  return program;
}

std::optional<std::filesystem::path> ExecutableBundle::resource(std::string_view name) const {
  const auto path = directory_ / name;
  std::error_code error;
  return std::filesystem::exists(path, error) ? std::optional(path) : std::nullopt;
}

}  // namespace tollvane
