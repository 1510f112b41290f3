#include "Platform/MacOS/Applications/WorkspaceRunningApplications.h"

#import <AppKit/AppKit.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

/// Reads a property from the system's object only when somebody asks for it, and only once.
class WorkspaceApplication final : public tidewell::RunningApplication {
 public:
  explicit WorkspaceApplication(NSRunningApplication* application) : application_(application) {}

  std::int32_t processIdentifier() const override { return application_.processIdentifier; }

  const std::optional<std::string>& bundleIdentifier() const override {
    @autoreleasepool {
      if (!bundleIdentifier_) {
        bundleIdentifier_.emplace(cleanedIfAny(application_.bundleIdentifier));
      }
    }
    return *bundleIdentifier_;
  }

  const std::optional<std::string>& localizedName() const override {
    @autoreleasepool {
      if (!localizedName_) localizedName_.emplace(cleanedIfAny(application_.localizedName));
    }
    return *localizedName_;
  }

 private:
  /// The value of a property, which may itself be absent; absent until somebody asks for it.
  using Asked = std::optional<std::optional<std::string>>;

  NSRunningApplication* const application_;
  mutable Asked bundleIdentifier_;
  mutable Asked localizedName_;
};

}  // namespace

WorkspaceRunningApplications::WorkspaceRunningApplications()
    : kept_({
          .processIdentifier =
              [](NSRunningApplication* application) { return application.processIdentifier; },
          .make =
              [](NSRunningApplication* application) {
                return std::make_shared<const WorkspaceApplication>(application);
              },
          .isSame = [](NSRunningApplication* one,
                       NSRunningApplication* other) { return [one isEqual:other] == YES; },
          .isSettled =
              [](const tidewell::RunningApplication& application) {
                return application.bundleIdentifier() && application.localizedName();
              },
      }) {}

std::vector<std::shared_ptr<const tidewell::RunningApplication>>
WorkspaceRunningApplications::all() {
  @autoreleasepool {
    std::vector<NSRunningApplication*> running;
    for (NSRunningApplication* application in NSWorkspace.sharedWorkspace.runningApplications) {
      running.push_back(application);
    }
    return kept_.update(running);
  }
}

std::shared_ptr<const tidewell::RunningApplication>
WorkspaceRunningApplications::withProcessIdentifier(std::int32_t pid) {
  @autoreleasepool {
    NSRunningApplication* application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
    if (application == nil) return nullptr;
    return std::make_shared<const WorkspaceApplication>(application);
  }
}

}  // namespace platform
