#import <AppKit/AppKit.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/macos/decisions/decisions.h"
#include "platform/macos/kernel/kernel_process.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "support/liveness.h"
#include "support/text.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;
using Done = std::function<void(bool)>;

// The system reports late that an application has come forward.
constexpr auto activationTime = 400ms;

std::uint64_t startTime(Pid pid) { return kernelProcess(pid).value_or(KernelProcess{}).startTime; }

RunningApplication described(NSRunningApplication* running) {
  RunningApplication application;
  application.pid = running.processIdentifier;
  if (running.localizedName.length > 0) application.localizedName = utf8(running.localizedName);
  if (running.activationPolicy == NSApplicationActivationPolicyRegular)
    application.activationPolicy = ActivationPolicy::regular;
  application.startTime = startTime(application.pid);
  return application;
}

// With it, what is opened comes forward.
NSWorkspaceOpenConfiguration* standard() { return [NSWorkspaceOpenConfiguration configuration]; }

// The system calls it on a thread of its own.
void (^reportTo(Done done))(NSRunningApplication*, NSError*) {
  return ^(NSRunningApplication*, NSError* error) {
    const bool opened = error == nil;
    onMainQueue([done, opened] { done(opened); });
  };
}

NSURL* webPage(std::string_view url) { return text::isWebPage(url) ? [NSURL URLWithString:nsString(url)] : nil; }

// False if the system refuses at once. From macOS 14 on, only the active application can let another one come forward.
bool mayComeForward(NSRunningApplication* running) {
  if (@available(macOS 14.0, *)) {
    [NSApp yieldActivationToApplication:running];
    return [running activateFromApplication:NSRunningApplication.currentApplication options:0];
  }
  return [running activateWithOptions:NSApplicationActivateIgnoringOtherApps];
}

class SharedWorkspace : public Workspace {
 public:
  explicit SharedWorkspace(MainQueue& queue) : queue_(queue) {}

  std::optional<RunningApplication> runningApplication(Pid pid) const override {
    NSRunningApplication* running = [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
    return running == nil ? std::nullopt : std::optional(described(running));
  }

  std::vector<RunningApplication> runningApplications(std::string_view bundleID) const override {
    auto found = all([NSRunningApplication runningApplicationsWithBundleIdentifier:nsString(bundleID)]);
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& one, const auto& other) { return one.startTime < other.startTime; });
    return found;
  }

  std::vector<RunningApplication> regularApplications() const override {
    auto found = all(shared().runningApplications);
    std::erase_if(found, [](const auto& each) { return each.activationPolicy != ActivationPolicy::regular; });
    return found;
  }

  std::vector<std::string> names(std::string_view bundleID) const override {
    std::vector<std::string> names;
    for (NSURL* url in [shared() URLsForApplicationsWithBundleIdentifier:nsString(bundleID)])
      if (const auto path = pathOf(url)) names.push_back(displayName(*path));
    return names;
  }

  std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const override {
    return pathOf([shared() URLForApplicationWithBundleIdentifier:nsString(bundleID)]);
  }

  std::string icon(std::string_view bundleID) const override {
    return urlForApplication(bundleID).value_or(std::filesystem::path()).native();
  }

  std::string displayName(const std::filesystem::path& path) const override {
    return utf8([NSFileManager.defaultManager displayNameAtPath:nsString(path.native())]);
  }

  // macOS tells no program the titles of others' windows without a permission that Tollvane does not ask for, so any
  // window of the application will do.
  void activate(const RunningApplication& application, std::string_view, Done done) override {
    NSRunningApplication* running = [NSRunningApplication runningApplicationWithProcessIdentifier:application.pid];
    const bool isMeant = isSameProcess(application.startTime, startTime(application.pid));
    if (running == nil || running.terminated || !isMeant) return done(false);
    attempt(running, false, false, std::move(done));
  }

  void open(const std::filesystem::path& path, Done done) override {
    [shared() openURL:fileURL(path) configuration:standard() completionHandler:reportTo(std::move(done))];
  }

  void openURL(std::string_view url) override {
    if (NSURL* page = webPage(url)) [shared() openURL:page];
  }

  void openURL(std::string_view url, const std::filesystem::path& application, Done done) override {
    NSURL* page = webPage(url);
    if (page == nil) return done(false);
    [shared() openURLs:@[ page ]
        withApplicationAtURL:fileURL(application)
               configuration:standard()
           completionHandler:reportTo(std::move(done))];
  }

 private:
  static NSWorkspace* shared() { return NSWorkspace.sharedWorkspace; }

  static std::vector<RunningApplication> all(NSArray<NSRunningApplication*>* applications) {
    std::vector<RunningApplication> found;
    for (NSRunningApplication* each in applications) found.push_back(described(each));
    return found;
  }

  // `isComing`: the system has accepted a request, so the application may still come forward.
  void attempt(NSRunningApplication* running, bool wasAsked, bool isComing, Done done) {
    NSURL* bundle = running.bundleURL;
    switch (nextStep(running.active, bundle != nil, wasAsked)) {
      case ActivationStep::ask:
        if (!mayComeForward(running)) return attempt(running, true, false, done);
        return queue_.after(activationTime, alive_.guard([=, this] { attempt(running, true, true, done); }));
      case ActivationStep::open:
        return [shared() openApplicationAtURL:bundle configuration:standard() completionHandler:reportTo(done)];
      case ActivationStep::none:
        return done(running.active || isComing);
    }
  }

  MainQueue& queue_;
  Liveness alive_;
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(MainQueue& queue) { return std::make_unique<SharedWorkspace>(queue); }

}  // namespace tollvane
