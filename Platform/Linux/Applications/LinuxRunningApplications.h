#pragma once

#include <memory>

#include "Platform/Linux/Applications/NamedHolders.h"
#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/RunningApplications.h"

namespace platform {

/// Names processes as the process tracker knows them. Main thread only; `tracker` must outlive it.
class LinuxRunningApplications : public tidewell::RunningApplications {
 public:
  LinuxRunningApplications(ProcessTracker& tracker, std::shared_ptr<NamedHolders> namedHolders);

  /// Also names processes that are no application, by their executable's name, so that the user can
  /// ignore them. It also names the holder of an assertion that a session service lists only by
  /// name.
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(
      std::int32_t pid) override;

 private:
  ProcessTracker& tracker_;
  std::shared_ptr<NamedHolders> namedHolders_;
};

}  // namespace platform
