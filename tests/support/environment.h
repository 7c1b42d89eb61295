// Sets environment variables of this process for as long as the object lives. One thread.
//
//   const Environment environment{{"HOME", "/home/me"}, {"XDG_DATA_HOME", nullptr}};   // null: removed
#pragma once

#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tollvane::test {

class Environment {
 public:
  using Variable = std::pair<const char*, const char*>;

  Environment(std::initializer_list<Variable> wanted) : Environment(std::vector(wanted)) {}
  explicit Environment(const std::vector<Variable>& wanted) {
    for (const auto& [name, value] : wanted) {
      const char* old = std::getenv(name);
      old_.emplace_back(name, old == nullptr ? std::nullopt : std::optional<std::string>(old));
      set(name, value);
    }
  }
  ~Environment() {
    for (auto variable = old_.rbegin(); variable != old_.rend(); ++variable)
      set(variable->first.c_str(), variable->second ? variable->second->c_str() : nullptr);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  static void set(const char* name, const char* value) {
    value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
  }

  std::vector<std::pair<std::string, std::optional<std::string>>> old_;
};

}  // namespace tollvane::test
