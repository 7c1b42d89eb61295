#include "platform/linux/system/json_defaults.h"

#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

nlohmann::json read(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return nlohmann::json::object();
  std::ifstream stream(file, std::ios::binary);
  if (auto values = json::object(std::string(std::istreambuf_iterator<char>(stream), {}))) return *std::move(values);
  std::filesystem::rename(file, file.string() + ".corrupt", error);
  return nlohmann::json::object();
}

}  // namespace

JsonDefaults::JsonDefaults(Files& files, std::optional<std::filesystem::path> file)
    : files_(files),
      file_(std::move(file)),
      values_(std::make_unique<nlohmann::json>(file_ ? read(*file_) : nlohmann::json::object())) {}

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
