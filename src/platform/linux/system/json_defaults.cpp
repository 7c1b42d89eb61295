#include "platform/linux/system/json_defaults.h"

#include <string>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

constexpr std::size_t largestFile = 1 << 20;

void setAside(Files& files, const std::filesystem::path& file) {
  std::filesystem::path other = file.string() + ".corrupt";
  for (int i = 2; files.exists(other); ++i) other = file.string() + ".corrupt-" + std::to_string(i);
  files.rename(file, other);
}

}  // namespace

JsonDefaults::JsonDefaults(Files& files, std::optional<std::filesystem::path> file)
    : files_(files), file_(std::move(file)), values_(std::make_unique<nlohmann::json>(nlohmann::json::object())) {}

// Without a file that can be read, the values stay as they are. Returns whether the file may be replaced.
bool JsonDefaults::read() const {
  std::error_code error;
  if (!file_) return false;
  if (!std::filesystem::is_regular_file(*file_, error)) return true;
  const bool isTooLarge = std::filesystem::file_size(*file_, error) > largestFile;
  const auto text = files_.read(*file_, largestFile);
  if (!text && !isTooLarge) return false;
  if (auto values = text ? json::object(*text) : std::nullopt) {
    *values_ = *std::move(values);
  } else {
    setAside(files_, *file_);
  }
  return true;
}

JsonDefaults::~JsonDefaults() = default;

std::optional<Defaults::Value> JsonDefaults::object(std::string_view key) const {
  read();
  const auto found = values_->find(key);
  if (found == values_->end() || found->is_null()) return std::nullopt;
  if (found->is_boolean()) return found->get<bool>();
  if (found->is_number()) return found->get<double>();
  return Other{};
}

void JsonDefaults::set(std::string_view key, bool value) { store(key, value); }
void JsonDefaults::set(std::string_view key, double value) { store(key, value); }

void JsonDefaults::store(std::string_view key, const nlohmann::json& value) {
  const bool mayWrite = read();
  (*values_)[std::string(key)] = value;
  if (!mayWrite) return;
  files_.createDirectories(file_->parent_path());
  files_.writeAtomically(*file_, json::pretty(*values_) + "\n");
}

}  // namespace tollvane
