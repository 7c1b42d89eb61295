#include "platform/linux/system/json_defaults.h"

#include <string>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

constexpr std::size_t largestFile = 1 << 20;

// The object in the file. If the file is not a JSON object, it is renamed, so that nothing is silently lost.
nlohmann::json valuesIn(Files& files, const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return nlohmann::json::object();
  const auto text = files.read(file, largestFile);
  if (auto values = text ? json::object(*text) : std::nullopt) return *std::move(values);
  files.rename(file, file.string() + ".corrupt");
  return nlohmann::json::object();
}

}  // namespace

JsonDefaults::JsonDefaults(Files& files, std::optional<std::filesystem::path> file)
    : files_(files),
      file_(std::move(file)),
      values_(std::make_unique<nlohmann::json>(file_ ? valuesIn(files, *file_) : nlohmann::json::object())) {}

JsonDefaults::~JsonDefaults() = default;

std::optional<Defaults::Value> JsonDefaults::object(std::string_view key) const {
  const auto found = values_->find(key);
  if (found == values_->end() || found->is_null()) return std::nullopt;
  if (found->is_boolean()) return found->get<bool>();
  if (found->is_number()) return found->get<double>();
  return Other{};
}

void JsonDefaults::set(std::string_view key, bool value) {
  (*values_)[std::string(key)] = value;
  store();
}

void JsonDefaults::set(std::string_view key, double value) {
  (*values_)[std::string(key)] = value;
  store();
}

void JsonDefaults::store() {
  if (!file_) return;
  files_.createDirectories(file_->parent_path());
  files_.writeAtomically(*file_, json::pretty(*values_) + "\n");
}

}  // namespace tollvane
