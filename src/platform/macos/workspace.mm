#import <AppKit/AppKit.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <utility>

#include "platform/macos/decisions/activation.h"
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

NSWorkspaceOpenConfiguration* comingForward() {
  NSWorkspaceOpenConfiguration* configuration = [NSWorkspaceOpenConfiguration configuration];
  configuration.activates = YES;
  return configuration;
}

// The system calls it on a thread of its own.
void (^reportTo(Done done))(NSRunningApplication*, NSError*) {
  return ^(NSRunningApplication*, NSError* error) {
    const bool opened = error == nil;
    onMainQueue([done, opened] { done(opened); });
  };
}

bool isCooperative() {
  if (@available(macOS 14.0, *)) return true;
  return false;
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

  std::optional<std::filesystem::path> urlForApplicationNamed(std::string_view) const override { return std::nullopt; }

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
    const bool isSame = application.startTime == 0 || application.startTime == startTime(application.pid);
    const auto steps = activationSteps(
        {.isRunning = running != nil && !running.terminated, .isSame = isSame, .hasBundle = running.bundleURL != nil},
        isCooperative());
    attempt(running, {steps.begin(), steps.end()}, false, std::move(done));
  }

  void open(const std::filesystem::path& path, Done done) override {
    [shared() openURL:fileURL(path) configuration:comingForward() completionHandler:reportTo(std::move(done))];
  }

  void openURL(std::string_view url) override {
    NSURL* page = text::isWebPage(url) ? [NSURL URLWithString:nsString(url)] : nil;
    if (page != nil) [shared() openURL:page];
  }

  void openURL(std::string_view url, const std::filesystem::path& application, Done done) override {
    NSURL* page = text::isWebPage(url) ? [NSURL URLWithString:nsString(url)] : nil;
    if (page == nil) return done(false);
    [shared() openURLs:@[ page ]
        withApplicationAtURL:fileURL(application)
               configuration:comingForward()
           completionHandler:reportTo(std::move(done))];
  }

 private:
  static NSWorkspace* shared() { return NSWorkspace.sharedWorkspace; }

  static std::vector<RunningApplication> all(NSArray<NSRunningApplication*>* applications) {
    std::vector<RunningApplication> found;
    for (NSRunningApplication* each in applications) found.push_back(described(each));
    return found;
  }

  // `wasAsked`: the system has accepted a request, so the application may still come forward.
  void attempt(NSRunningApplication* running, std::deque<ActivationStep> steps, bool wasAsked, Done done) {
    if (running.active) return done(true);
    if (steps.empty()) return done(wasAsked);
    const ActivationStep step = steps.front();
    steps.pop_front();
    if (step == ActivationStep::open) {
      [shared() openApplicationAtURL:running.bundleURL
                       configuration:comingForward()
                   completionHandler:reportTo(std::move(done))];
      return;
    }
    if (!asked(running, step)) return attempt(running, std::move(steps), wasAsked, std::move(done));
    queue_.after(activationTime, alive_.guard([this, running, steps, done] { attempt(running, steps, true, done); }));
  }

  static bool asked(NSRunningApplication* running, ActivationStep step) {
    if (step == ActivationStep::activateIgnoringOthers)
      return [running activateWithOptions:NSApplicationActivateIgnoringOtherApps];
    if (@available(macOS 14.0, *)) {
      [NSApp yieldActivationToApplication:running];
      return [running activateFromApplication:NSRunningApplication.currentApplication options:0];
    }
    return false;
  }

  MainQueue& queue_;
  Liveness alive_;
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(MainQueue& queue) { return std::make_unique<SharedWorkspace>(queue); }

}  // namespace tollvane
