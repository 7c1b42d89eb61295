#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class UserDefaults : public Defaults {
 public:
  // The raw object: boolForKey: would take a text for a truth value.
  std::optional<Value> object(std::string_view key) const override {
    NSObject* object = [NSUserDefaults.standardUserDefaults objectForKey:nsString(key)];
    if (object == nil) return std::nullopt;
    if (![object isKindOfClass:[NSNumber class]]) return Other{};
    NSNumber* number = (NSNumber*)object;
    // Truth values have a class of their own.
    if ([number isKindOfClass:[@YES class]]) return static_cast<bool>(number.boolValue);
    return number.doubleValue;
  }

  void set(std::string_view key, bool value) override {
    [NSUserDefaults.standardUserDefaults setBool:value forKey:nsString(key)];
    [NSUserDefaults.standardUserDefaults synchronize];
  }

  void set(std::string_view key, double value) override {
    [NSUserDefaults.standardUserDefaults setDouble:value forKey:nsString(key)];
    [NSUserDefaults.standardUserDefaults synchronize];
  }
};

}  // namespace

std::unique_ptr<Defaults> makeDefaults() { return std::make_unique<UserDefaults>(); }

}  // namespace tollvane
