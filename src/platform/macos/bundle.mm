#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class MainBundle : public Bundle {
 public:
  std::optional<std::string> infoString(std::string_view key) const override { return text(info(key)); }

  std::vector<std::string> infoStrings(std::string_view key) const override {
    NSObject* value = info(key);
    std::vector<std::string> texts;
    if (![value isKindOfClass:[NSArray class]]) return texts;
    for (NSObject* member in (NSArray<NSObject*>*)value)
      if (auto found = text(member)) texts.push_back(*std::move(found));
    return texts;
  }

  std::optional<std::filesystem::path> auxiliaryExecutable(std::string_view name) const override {
    return pathOf([NSBundle.mainBundle URLForAuxiliaryExecutable:nsString(name)]);
  }

  std::optional<std::filesystem::path> resource(std::string_view name) const override {
    return pathOf([NSBundle.mainBundle URLForResource:nsString(name) withExtension:nil]);
  }

  std::filesystem::path logTool() const override { return "/usr/bin/log"; }

 private:
  // Not objectForInfoDictionaryKey:, whose answer is translated.
  static NSObject* info(std::string_view key) { return NSBundle.mainBundle.infoDictionary[nsString(key)]; }

  static std::optional<std::string> text(NSObject* value) {
    return [value isKindOfClass:[NSString class]] ? std::optional(utf8((NSString*)value)) : std::nullopt;
  }
};

}  // namespace

std::unique_ptr<Bundle> makeBundle() { return std::make_unique<MainBundle>(); }

}  // namespace tollvane
