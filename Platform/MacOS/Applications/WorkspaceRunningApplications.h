#pragma once

#include <memory>
#include <vector>

#include "Tidewell/Ports/RunningApplications.h"

namespace platform {

/// The running applications, as the shared workspace lists them. The workspace updates its list
/// from the main run loop.
class WorkspaceRunningApplications final : public tidewell::RunningApplications {
 public:
  /// All of them as of now.
  static std::vector<std::shared_ptr<const tidewell::RunningApplication>> all();
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(
      std::int32_t pid) override;
};

}  // namespace platform
