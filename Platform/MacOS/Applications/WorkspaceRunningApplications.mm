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

std::vector<std::shared_ptr<const tidewell::RunningApplication>>
WorkspaceRunningApplications::all() {
  std::vector<std::shared_ptr<const tidewell::RunningApplication>> all;
  @autoreleasepool {
    for (NSRunningApplication* application in NSWorkspace.sharedWorkspace.runningApplications) {
      all.push_back(std::make_shared<const WorkspaceApplication>(application));
    }
  }
  return all;
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
