// The user's defaults as one small JSON object in a file. Every question reads it; every set() changes one member of
// what is stored then, and replaces the file before it returns: what others write into it counts, and is kept. A file
// that is not a JSON object is renamed to FILE.corrupt (or FILE.corrupt-2 and so on), never silently emptied; a file
// that cannot be read stays as it is, and values are kept for this run only. Main thread only.
#pragma once

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "platform/defaults.h"
#include "platform/files.h"

namespace tollvane {

class JsonDefaults : public Defaults {
 public:
  // Without `file`, everything is kept for this run only.
  JsonDefaults(Files& files, std::optional<std::filesystem::path> file);
  ~JsonDefaults() override;

  std::optional<Value> object(std::string_view key) const override;
  void set(std::string_view key, bool value) override;
  void set(std::string_view key, double value) override;

 private:
  bool read() const;
  void store(std::string_view key, const nlohmann::json& value);

  Files& files_;
  std::optional<std::filesystem::path> file_;
  std::unique_ptr<nlohmann::json> values_;
};

}  // namespace tollvane
