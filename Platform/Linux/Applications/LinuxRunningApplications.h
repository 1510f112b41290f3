#pragma once

#include <memory>

#include "Platform/Linux/Applications/NamedHolders.h"
#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/RunningApplications.h"

namespace platform {

/// Tells the names of processes that the process tracker knows. Main thread only; `tracker` must
/// outlive it.
class LinuxRunningApplications : public tidewell::RunningApplications {
 public:
  LinuxRunningApplications(ProcessTracker& tracker, std::shared_ptr<NamedHolders> namedHolders);

  /// A process that belongs to no application has the name of its executable, so that the user can
  /// ignore it. A negative number from `NamedHolders` has the name of its holder.
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(
      std::int32_t pid) override;

 private:
  ProcessTracker& tracker_;
  std::shared_ptr<NamedHolders> namedHolders_;
};

}  // namespace platform
