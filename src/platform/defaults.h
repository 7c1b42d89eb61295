// The user's defaults: a small key/value store that outlives the process. Main thread only. When set() returns, the
// value is stored on disk; if that fails, it fails silently, and the value is kept for the rest of this run. A key that
// was never set is absent.
#pragma once

#include <optional>
#include <string_view>
#include <variant>

namespace tollvane {

class Defaults {
 public:
  // A value of a type that Tollvane does not use (a text, for example): it is present, but cannot be read.
  struct Other {};
  using Value = std::variant<bool, double, Other>;

  virtual ~Defaults() = default;

  virtual std::optional<Value> object(std::string_view key) const = 0;
  virtual void set(std::string_view key, bool value) = 0;
  virtual void set(std::string_view key, double value) = 0;
};

}  // namespace tollvane
