#pragma once

#include <memory>
#include <vector>

#include "Platform/MacOS/Applications/KeptApplications.h"
#include "Tidewell/Ports/RunningApplications.h"

@class NSRunningApplication;

namespace platform {

/// The running applications, as the shared workspace lists them. The workspace updates its list
/// from the main run loop.
class WorkspaceRunningApplications final : public tidewell::RunningApplications {
 public:
  WorkspaceRunningApplications();

  /// All of them as of now. An application has the same object as long as it runs.
  std::vector<std::shared_ptr<const tidewell::RunningApplication>> all();
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(
      std::int32_t pid) override;

 private:
  KeptApplications<NSRunningApplication*> kept_;
};

}  // namespace platform
